// Reads the input as a JSON document with every option and checks what must hold for all bytes: the
// result is either a value or an error; each value can be printed and copied, and is equal after it
// was written and read again.

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>

#include <cstdlib>
#include <string_view>

using namespace zeb;

namespace {

constexpr std::uint64_t everyReadingOption = 7;
constexpr std::uint64_t everyWritingOption = 15;

void require(bool holds) {
  if (!holds) std::abort();
}

void checkError(const NSError& error, std::size_t size) {
  require(error.code() == NSPropertyListReadCorruptError);
  require(error.localizedDescription().length() > 0);
  const Value offset = error.userInfo()[NSString(NSJSONSerializationErrorIndexKey)];
  require(offset.isNumber() && static_cast<std::size_t>(offset.longLongValue()) <= size);
}

void checkValue(const Value& value) {
  require(value.isEqual(value));
  require(!value.description().isNil());
  for (const Value& copy : {value.copy(), value.mutableCopy(), value.detachedCopy()}) {
    require(copy.isEqual(value) && value.isEqual(copy) && copy.hash() == value.hash());
  }
}

void checkWriting(const Value& value, std::uint64_t options) {
  const NSData written =
      NSJSONSerialization::dataWithJSONObject(value, options | NSJSONWritingFragmentsAllowed);
  require(!written.isNil());
  const Value back =
      NSJSONSerialization::JSONObjectWithData(written, NSJSONReadingFragmentsAllowed);
  require(back.isEqual(value));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const NSData bytes = NSData::dataWithBytesNoCopy(std::as_bytes(std::span(data, size)), nullptr);
  Value plain;
  for (std::uint64_t options = 0; options <= everyReadingOption; ++options) {
    NSError error;
    const Value value = NSJSONSerialization::JSONObjectWithData(bytes, options, &error);
    require(value.isNil() != error.isNil());
    if (value.isNil()) {
      checkError(error, size);
      continue;
    }
    if (plain.isNil()) plain = value;
    require(value.isEqual(plain));
    checkValue(value);
  }
  if (plain.isNil()) return 0;
  for (std::uint64_t options = 0; options <= everyWritingOption; ++options) {
    checkWriting(plain, options);
  }
  return 0;
}
