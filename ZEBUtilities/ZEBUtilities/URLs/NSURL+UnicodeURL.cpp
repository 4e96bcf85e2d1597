#include <ZEBPlatform/Url/NSURL+Components.h>
#include <ZEBUtilities/URLs/NSURL+UnicodeURL.h>
#include <ZEBUtilities/URLs/UnicodeURLConversion.h>

namespace zeb {

NSURL URLWithUnicodeString(const NSString& string) {
  return string.empty() ? NSURL() : initWithUnicodeString(string);
}

NSURL initWithUnicodeString(const NSString& string) {
  return NSURL::URLWithString(ConvertUnicodeURLString(string, true));
}

NSString unicodeAbsoluteString(const NSURL& url) {
  return ConvertUnicodeURLString(url.absoluteString(), false);
}

NSString unicodeHost(const NSURL& url) { return decodeUnicodeDomainString(host(url)); }

NSString decodeUnicodeDomainString(const NSString& domain) {
  return ConvertUnicodeDomainString(domain, false);
}

}  // namespace zeb
