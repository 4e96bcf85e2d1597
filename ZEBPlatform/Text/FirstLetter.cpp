#include <ZEBPlatform/Foundation/detail/FirstLetter.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <array>
#include <cstdint>
#include <string_view>

extern "C" void zebUppercaseFirstLetter(zeb::NSString& text) {
  const std::size_t length = text.length();
  if (length == 0) return;
  const char16_t first = text.characterAtIndex(0);
  std::size_t count = 1;
  if (U16_IS_LEAD(first) && length > 1 && U16_IS_TRAIL(text.characterAtIndex(1))) count = 2;
  const std::array<char16_t, 2> letter{first, count == 2 ? text.characterAtIndex(1) : u'\0'};

  // One character has at most three in upper case. The empty locale selects the rules that hold
  // for all languages, because the text's language is unknown.
  std::array<char16_t, 8> upper{};
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t upperLength =
      u_strToUpper(upper.data(), static_cast<std::int32_t>(upper.size()), letter.data(),
                   static_cast<std::int32_t>(count), "", &status);
  if (U_FAILURE(status)) return;
  const std::u16string_view result(upper.data(), static_cast<std::size_t>(upperLength));
  if (result == std::u16string_view(letter.data(), count)) return;
  text = zeb::NSString(result) + text.substringFromIndex(count);
}
