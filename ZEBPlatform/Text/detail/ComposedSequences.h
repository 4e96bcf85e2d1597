#pragma once

#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Text/detail/CharacterTraits.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zeb::detail {

/// Finds the boundaries of the composed character sequences in a text of 16-bit units, which must
/// outlive this object and not change.
///
/// A sequence depends on nothing before it, so that searching may begin at any boundary. The
/// sequences of the common characters are found without ICU, others by the iterator that each
/// thread keeps. Several objects may use one thread's iterator in turns.
class ComposedSequences {
 public:
  explicit ComposedSequences(std::u16string_view units) noexcept
      : units_(units), traits_(CharacterTraits::shared()) {}

  /// The end of the sequence that begins at `start`, a boundary before the end of the text.
  std::size_t endFrom(std::size_t start);

  /// The start of the sequence that contains the unit at `index`.
  std::size_t startOf(std::size_t index);

 private:
  static constexpr std::size_t unknownEnd = static_cast<std::size_t>(-1);

  /// Moves `next` behind the code point.
  ComposingClass classAt(std::size_t index, std::size_t& next) const noexcept {
    next = index;
    return traits_.composingClass(nextScalar(units_, next));
  }
  ComposingClass classBefore(std::size_t index) const noexcept;
  /// `unknownEnd` if ICU has to decide.
  std::size_t knownEndFrom(std::size_t start) const noexcept;
  bool isCertainBoundary(std::size_t index) const noexcept;

  std::size_t endByICU(std::size_t start);
  std::size_t startByICU(std::size_t codePoint);
  /// Gives the thread's iterator the units from `start` on, at most `maxWindow` of them.
  bool placeWindow(std::size_t start);

  std::u16string_view units_;
  const CharacterTraits& traits_;
  std::size_t windowStart_ = 0;
  std::size_t windowEnd_ = 0;
  std::uint64_t placement_ = 0;  ///< which placement of a window was this object's last one
};

}  // namespace zeb::detail
