#include <ZEBPlatform/Linux/SystemControl.h>
#include <ZEBUtilities/Device/ZEBSystemControl.h>

#include <cerrno>
#include <string>

namespace zeb {

namespace {

/// Reads the control's value, a text or an integer. Answers 0 or the error number.
template <class Result>
int readControl(int type, int subtype, const NSString& name, Result& value) {
  if (type != 0) return readSystemControl(type, subtype, value);
  return readSystemControl(name.isWellFormed() ? name.utf8() : std::string(), value);
}

void report(int failure, NSError* error) {
  if (error) *error = NSError(NSPOSIXErrorDomain, failure);
}

std::int32_t retrieveInt(int type, int subtype, const NSString& name, NSError* error) {
  std::int32_t value = 0;
  if (const int failure = readControl(type, subtype, name, value)) report(failure, error);
  return value;
}

}  // namespace

NSString ZEBSystemControlRetrieveString(int type, int subtype, const NSString& name,
                                        NSError* error) {
  std::string bytes;
  int failure = readControl(type, subtype, name, bytes);
  NSString text = NSString::stringWithUTF8(bytes);
  if (!failure && text.isNil()) failure = EINVAL;
  if (!failure) return text;
  report(failure, error);
  return nullptr;
}

NSString ZEBSystemControlRetrieveStringByControlType(int type, int subtype, NSError* error) {
  return ZEBSystemControlRetrieveString(type, subtype, nullptr, error);
}

NSString ZEBSystemControlRetrieveStringByName(const NSString& name, NSError* error) {
  return ZEBSystemControlRetrieveString(0, 0, name, error);
}

std::int32_t ZEBSystemControlRetrieveIntByControlType(int type, int subtype, NSError* error) {
  return retrieveInt(type, subtype, nullptr, error);
}

std::int32_t ZEBSystemControlRetrieveIntByName(const NSString& name, NSError* error) {
  return retrieveInt(0, 0, name, error);
}

}  // namespace zeb
