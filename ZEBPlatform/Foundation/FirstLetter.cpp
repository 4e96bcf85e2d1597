#include <ZEBPlatform/Foundation/detail/FirstLetter.h>

#include <string>

namespace zeb::detail {

NSString withUppercaseFirstLetter(const NSString& text) {
  if (text.empty()) return NSString("");
  NSString result = text;
  if (zebUppercaseFirstLetter) {
    zebUppercaseFirstLetter(result);
    return result;
  }
  const char16_t first = text.characterAtIndex(0);
  if (first < u'a' || first > u'z') return text;
  return NSString(std::string(1, static_cast<char>(first - u'a' + u'A'))) +
         text.substringFromIndex(1);
}

}  // namespace zeb::detail
