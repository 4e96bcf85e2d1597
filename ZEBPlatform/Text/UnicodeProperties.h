#pragma once

namespace zeb {

/// Whether Unicode gives the code point the property Emoji, in the version of the ICU library. Not
/// only pictures have it: the digits, "#" and "*" do, too, because they begin keycap sequences.
bool unicodeHasEmojiProperty(char32_t codePoint) noexcept;

/// Whether the upper-case form of the code point is another one. True of lower-case letters; false
/// of digits and of letters without case.
bool unicodeChangesWhenUppercased(char32_t codePoint) noexcept;

/// The value of a decimal digit of any script (category Nd), from 0 to 9; -1 for other code points.
int unicodeDecimalDigitValue(char32_t codePoint) noexcept;

}  // namespace zeb
