#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/KeyedCoding/NSCoder.h>

namespace zeb {

namespace {

[[noreturn]] void raiseWrongDirection(const char* function) {
  raiseInvalidArgument(NSString(function) +
                       ": this coder does not work in that direction; encode with an archiver and "
                       "decode with an unarchiver");
}

}  // namespace

void NSCoder::encodeInteger(std::int64_t, const NSString&) { raiseWrongDirection("encodeInteger"); }
void NSCoder::encodeInt32(std::int32_t, const NSString&) { raiseWrongDirection("encodeInt32"); }
void NSCoder::encodeObject(const NSString&, const NSString&) {
  raiseWrongDirection("encodeObject");
}
void NSCoder::encodeObject(const NSArray&, const NSString&) { raiseWrongDirection("encodeObject"); }
bool NSCoder::containsValueForKey(const NSString&) const {
  raiseWrongDirection("containsValueForKey");
}
std::int64_t NSCoder::decodeIntegerForKey(const NSString&) {
  raiseWrongDirection("decodeIntegerForKey");
}
std::int32_t NSCoder::decodeInt32ForKey(const NSString&) {
  raiseWrongDirection("decodeInt32ForKey");
}
NSString NSCoder::decodeStringForKey(const NSString&) { raiseWrongDirection("decodeStringForKey"); }
NSArray NSCoder::decodeArrayOfStringsForKey(const NSString&) {
  raiseWrongDirection("decodeArrayOfStringsForKey");
}
void NSCoder::failWithError(const NSError&) { raiseWrongDirection("failWithError"); }
NSError NSCoder::error() const { return nullptr; }

NSCoder& coderArgument(NSCoder* coder) {
  if (!coder) raiseInvalidArgument("a coder was expected, but the argument is nil");
  return *coder;
}

}  // namespace zeb
