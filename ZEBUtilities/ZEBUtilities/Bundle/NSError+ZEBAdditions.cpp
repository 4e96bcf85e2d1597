#include <ZEBPlatform/Foundation/detail/FirstLetter.h>
#include <ZEBUtilities/Bundle/NSError+ZEBAdditions.h>

namespace zeb {

namespace {

bool isError(const NSError& error, const char* domain, std::int64_t code) {
  return error.code() == code && error.domain() == NSString(domain);
}

}  // namespace

NSError zeb_errorWithDomain(const NSString& domain, std::int64_t code,
                            const NSString& description) {
  const NSString text = description.isNil() ? NSString("") : description;
  return NSError(domain, code, {{NSString(NSLocalizedDescriptionKey), text}});
}

NSString zeb_errorString(const NSError& error) {
  if (error.isNil()) return nullptr;
  const NSString description(error.userInfo()[NSString(NSLocalizedDescriptionKey)]);
  if (!description.isNil()) {
    const NSString suffix(". (null).");
    if (!description.hasSuffix(suffix)) return description;
    return description.substringToIndex(description.length() - suffix.length());
  }
  const NSString reason = error.localizedFailureReason();
  return NSString::stringWithFormat(
      "%zd %@", error.code(),
      detail::withUppercaseFirstLetter(reason.isNil() ? error.domain() : reason));
}

bool zeb_isNotConnectedToInternetError(const NSError& error) {
  return isError(error, NSURLErrorDomain, -1009) || isError(error, kCFErrorDomainCFNetwork, 2);
}

bool zeb_isTimedOutError(const NSError& error) {
  return isError(error, NSPOSIXErrorDomain, 60) || isError(error, NSURLErrorDomain, -1001);
}

NSString zeb_errorDomainAndCodeString(const NSError& error, std::uint64_t flags) {
  if (error.isNil()) return nullptr;
  NSMutableString text;
  NSError current = error;
  do {
    text.appendFormat("%s%@:%zd", text.length() ? "," : "", current.domain(), current.code());
    current = current.underlyingError();
  } while (current && flags & ZEBErrorDomainAndCodeFlagUnderlyingErrors);
  return text.copy();
}

}  // namespace zeb
