#pragma once

#include <unicode/unorm2.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zeb::detail {

/// What a folded text keeps of the original.
struct Folding {
  enum class Case { kept, ignored, ignoredAsInTurkish };
  enum class Marks { kept, ignored };

  Case letterCase = Case::kept;
  Marks marks = Marks::kept;
};

/// A code unit of a folded text, and where it comes from.
struct FoldedUnit {
  static constexpr std::size_t noBoundary = SIZE_MAX;

  char16_t unit;
  /// Where the unit's character begins in the original, if this is the character's first unit.
  std::size_t begin;
  /// Where the unit's character ends in the original, if this is the character's last unit.
  std::size_t end;
};

/// The folded form of a text, unit by unit: canonically decomposed, with folded case, so that texts
/// that readers take for equal have the same units. It is made character by character and needs no
/// memory but for the longest character with its combining marks.
class FoldedText {
 public:
  FoldedText(std::u16string_view units, Folding folding);

  /// False at the end.
  bool next(FoldedUnit& unit);

 private:
  /// Folds the character at `position_` and moves behind it.
  void foldCharacter();
  void foldCase();
  /// Replaces the folded character by the decomposed form of the units.
  void decompose(std::u16string_view units);

  const std::u16string_view units_;
  const Folding folding_;
  const UNormalizer2* decomposition_;
  std::size_t position_ = 0;
  std::size_t begin_ = 0;        ///< of the current character
  std::u16string folded_;        ///< of the current character
  std::size_t foldedIndex_ = 0;  ///< of the next unit
  std::u32string scratch_;
};

}  // namespace zeb::detail
