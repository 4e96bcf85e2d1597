#pragma once

namespace zeb {

/// Whether Unicode gives the code point the property Emoji, in the version of the ICU library. Not
/// only pictures have it: the digits, "#" and "*" do, too, because they begin keycap sequences.
bool unicodeHasEmojiProperty(char32_t codePoint) noexcept;

}  // namespace zeb
