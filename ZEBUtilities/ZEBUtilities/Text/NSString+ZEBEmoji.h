#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

/// Recognition of texts that consist of emoji only, which applications show larger. Any thread may
/// call these functions, as long as a mutable text does not change meanwhile.
namespace zeb {

/// Whether each composed character sequence is an emoji: a flag, a keycap, or a sequence that
/// begins with a character of Unicode's property Emoji and does not ask for its presentation as
/// text (U+FE0E). Digits, "#" and "*" alone, single regional indicators, spaces and unpaired
/// surrogates are not. True of the empty text; false of nil.
bool zeb_containsOnlyEmoji(const NSString& string);

/// The first two code points of a text, and what follows them.
struct ZEBEmojiCharacterData {
  static constexpr std::uint64_t keycapFlag = 1;
  static constexpr std::uint64_t malformedFlag = 2;

  std::uint64_t codePoints = 0;  ///< the first one in the lower half, the second one in the upper
  std::uint64_t flags = 0;

  char32_t first() const noexcept { return static_cast<char32_t>(codePoints & 0xFFFFFFFF); }
  char32_t second() const noexcept { return static_cast<char32_t>(codePoints >> 32); }
  /// Whether U+20E3 follows the first code point, at once or later.
  bool isKeycap() const noexcept { return flags & keycapFlag; }
  /// Whether there is an unpaired surrogate. If it is one of the first two code points, this one is
  /// 0, and nothing behind it is looked at.
  bool isMalformed() const noexcept { return flags & malformedFlag; }

  bool operator==(const ZEBEmojiCharacterData&) const = default;
};

/// All zeros for the empty text and for nil.
ZEBEmojiCharacterData _zeb_emojiCharacterData(const NSString& string) noexcept;

}  // namespace zeb
