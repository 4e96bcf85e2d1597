#include <ZEBPlatform/Foundation.h>
#include <ZEBUtilities/JSON.h>

#include <cstdio>

int main() {
  using namespace zeb;
  const NSData bytes = NSData::dataWithBytes(R"({"name": "Noor"})");
  const Value user = ZEBJSONSerialization::JSONObjectWithData(bytes, true, 0);
  std::puts(user.description().utf8().c_str());
}
