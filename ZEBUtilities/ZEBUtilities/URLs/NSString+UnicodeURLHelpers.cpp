#include <ZEBUtilities/URLs/NSString+UnicodeURLHelpers.h>

#include <algorithm>
#include <cstddef>

namespace zeb {

namespace {

template <class View>
std::size_t firstPlaceIn(View text, const ASCIICharacterSet& set) noexcept {
  const auto isMember = [&](auto unit) { return set.contains(static_cast<char16_t>(unit)); };
  const auto found = std::find_if(text.begin(), text.end(), isMember);
  return static_cast<std::size_t>(found - text.begin());
}

}  // namespace

bool _UnicodeURL_isValidCharacterSequence(const NSString& string) noexcept {
  return !string.isNil() && string.isWellFormed();
}

std::pair<NSString, NSString> _UnicodeURL_splitAfterString(const NSString& string,
                                                           const NSString& separator) {
  if (string.isNil()) return {};
  const NSRange found = string.rangeOfString(separator);
  if (found.location == NSNotFound) return {"", string};
  const std::size_t end = found.location + found.length;
  return {string.substringToIndex(end), string.substringFromIndex(end)};
}

std::pair<NSString, NSString> _UnicodeURL_splitBeforeCharactersInSet(const NSString& string,
                                                                     const ASCIICharacterSet& set) {
  if (string.isNil()) return {};
  const std::size_t place = string.isASCII() ? firstPlaceIn(string.asciiView(), set)
                                             : firstPlaceIn(string.utf16View(), set);
  return {string.substringToIndex(place), string.substringFromIndex(place)};
}

}  // namespace zeb
