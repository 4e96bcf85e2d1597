#pragma once

#include <array>
#include <cstdint>

namespace zeb::detail {

/// How a code point takes part in composed character sequences. A sequence of the classes other
/// than `unknown` follows few rules, which have been the same in all versions of Unicode since 11.
enum class ComposingClass : std::uint8_t {
  unknown,  ///< ICU decides
  plain,    ///< begins a sequence
  control,  ///< a sequence of its own
  carriageReturn,
  lineFeed,
  pictograph,         ///< begins a sequence, unless a joiner connects it to another pictograph
  regionalIndicator,  ///< begins a sequence, or is the second half of a flag
  extending,          ///< continues a sequence
  joiner,             ///< the same
};

/// The properties of the code points that texts with emoji contain most often, read from ICU once.
class CharacterTraits {
 public:
  static const CharacterTraits& shared();

  ComposingClass composingClass(char32_t codePoint) const noexcept {
    if (codePoint < low_.size()) return classIn(low_[codePoint]);
    if (codePoint - firstHigh < high_.size()) return classIn(high_[codePoint - firstHigh]);
    if (codePoint - firstSelector < selectorCount) return ComposingClass::extending;
    return classElsewhere(codePoint);
  }
  bool isEmoji(char32_t codePoint) const noexcept {
    if (codePoint < low_.size()) return low_[codePoint] & emojiFlag;
    if (codePoint - firstHigh < high_.size()) return high_[codePoint - firstHigh] & emojiFlag;
    return isEmojiElsewhere(codePoint);
  }

  CharacterTraits();

 private:
  static constexpr std::uint8_t emojiFlag = 0x80;
  /// The blocks with pictographs above U+FFFF begin here.
  static constexpr char32_t firstHigh = 0x1F000;
  static constexpr char32_t firstSelector = 0xFE00;
  static constexpr char32_t selectorCount = 16;

  static ComposingClass classIn(std::uint8_t traits) noexcept {
    return static_cast<ComposingClass>(traits & ~emojiFlag);
  }
  static ComposingClass classElsewhere(char32_t codePoint) noexcept;
  static bool isEmojiElsewhere(char32_t codePoint) noexcept;

  std::array<std::uint8_t, 0x3400> low_;
  std::array<std::uint8_t, 0xC00> high_;
};

}  // namespace zeb::detail
