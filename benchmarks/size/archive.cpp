#include <ZEBPlatform/Foundation.h>
#include <ZEBUtilities/Coding.h>

#include <cstdio>

using namespace zeb;

struct Author {
  NSString name;

  static const char* encodableName() { return "Author"; }
  void encode(ZEBEncoder& encoder) const { encoder.encodeString(name, "name"); }
  explicit Author(NSString authorName) : name(authorName) {}
  explicit Author(ZEBDecoder& decoder) : name(decoder.decodeStringForKey("name")) {}
};

int main() {
  const NSData document = ZEBArchiver().archivedData(Author("Noor"));
  const ZEBUnarchiver unarchiver(
      makeRef<BasicDecodingBuilderRegistry>({BuilderSpec::decodableType<Author>()}));
  std::puts(unarchiver.unarchivedRootObject<Author>(document).name.utf8().c_str());
}
