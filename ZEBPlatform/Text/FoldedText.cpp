#include <ZEBPlatform/Foundation/detail/StableSort.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Text/FoldedTextPrivate.h>
#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <array>
#include <span>

namespace zeb::detail {

namespace {

/// All code units below this one begin a character of their own, and no mark is among them.
constexpr char16_t firstMark = u'\u0300';
/// No code point has a longer canonical decomposition; the rest is for later versions of Unicode.
constexpr std::size_t maxDecomposition = 16;
/// Case folding makes a text at most this many times as long.
constexpr std::size_t maxFoldingGrowth = 3;

std::uint8_t combiningClass(char32_t codePoint) noexcept {
  return u_getCombiningClass(static_cast<UChar32>(codePoint));
}

/// The order of combining marks that canonically equal texts have. Merging keeps long rows of marks
/// from taking quadratic time.
void sortMarks(std::u32string& text) {
  const auto isMark = [](char32_t codePoint) { return combiningClass(codePoint) != 0; };
  for (auto begin = text.begin(); begin != text.end();) {
    begin = std::find_if(begin, text.end(), isMark);
    const auto end = std::find_if_not(begin, text.end(), isMark);
    stableSort(std::span(begin, end), [](char32_t left, char32_t right) {
      return combiningClass(left) < combiningClass(right);
    });
    begin = end;
  }
}

void appendUnits(std::u16string& units, char32_t codePoint) {
  if (codePoint > 0xFFFF) {
    units += static_cast<char16_t>(U16_LEAD(codePoint));
    codePoint = U16_TRAIL(codePoint);
  }
  units += static_cast<char16_t>(codePoint);
}

}  // namespace

FoldedText::FoldedText(std::u16string_view units, Folding folding)
    : units_(units), folding_(folding) {
  UErrorCode status = U_ZERO_ERROR;
  decomposition_ = unorm2_getNFDInstance(&status);
  if (U_FAILURE(status)) decomposition_ = nullptr;  // without ICU's data nothing is decomposed
}

bool FoldedText::next(FoldedUnit& unit) {
  while (foldedIndex_ == folded_.size()) {
    if (position_ == units_.size()) return false;
    foldCharacter();
  }
  unit.unit = folded_[foldedIndex_];
  unit.begin = foldedIndex_ == 0 ? begin_ : FoldedUnit::noBoundary;
  ++foldedIndex_;
  unit.end = foldedIndex_ == folded_.size() ? position_ : FoldedUnit::noBoundary;
  return true;
}

void FoldedText::foldCharacter() {
  begin_ = position_;
  foldedIndex_ = 0;
  const char16_t first = units_[position_];
  if (first < 0x80 && first != u'I' &&
      (position_ + 1 == units_.size() || units_[position_ + 1] < firstMark)) {
    const bool isChanged =
        folding_.letterCase != Folding::Case::kept && first >= u'A' && first <= u'Z';
    folded_.assign(1, static_cast<char16_t>(isChanged ? first + (u'a' - u'A') : first));
    ++position_;
    return;
  }

  nextScalar(units_, position_);
  while (position_ < units_.size()) {
    std::size_t next = position_;
    const auto codePoint = static_cast<UChar32>(nextScalar(units_, next));
    if (!decomposition_ || unorm2_hasBoundaryBefore(decomposition_, codePoint)) break;
    position_ = next;
  }
  decompose(units_.substr(begin_, position_ - begin_));
  if (folding_.letterCase != Folding::Case::kept) foldCase();
}

void FoldedText::foldCase() {
  std::uint32_t options = U_FOLD_CASE_DEFAULT;
  if (folding_.letterCase == Folding::Case::ignoredAsInTurkish) {
    options = U_FOLD_CASE_EXCLUDE_SPECIAL_I;
    // Folding knows only the undivided capital I with a dot.
    if (const std::size_t dot = folded_.find(u'\u0307');
        folded_.starts_with(u'I') && dot != folded_.npos) {
      folded_.erase(dot, 1);
      folded_.front() = u'i';
    }
  }
  std::u16string result(folded_.size() * maxFoldingGrowth, u'\0');
  if (result.size() > INT32_MAX) return;
  UErrorCode status = U_ZERO_ERROR;
  const std::int32_t length =
      u_strFoldCase(result.data(), static_cast<std::int32_t>(result.size()), folded_.data(),
                    static_cast<std::int32_t>(folded_.size()), options, &status);
  if (U_FAILURE(status)) return;
  result.resize(static_cast<std::size_t>(length));
  // Some folded characters can be decomposed again.
  if (result != folded_) decompose(result);
}

void FoldedText::decompose(std::u16string_view units) {
  scratch_.clear();
  for (std::size_t index = 0; index < units.size();) {
    const char32_t codePoint = nextScalar(units, index);
    std::array<char16_t, maxDecomposition> parts;
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length =
        decomposition_
            ? unorm2_getDecomposition(decomposition_, static_cast<UChar32>(codePoint), parts.data(),
                                      static_cast<std::int32_t>(parts.size()), &status)
            : -1;
    if (length < 0 || U_FAILURE(status)) {
      scratch_ += codePoint;
      continue;
    }
    const std::u16string_view decomposed(parts.data(), static_cast<std::size_t>(length));
    for (std::size_t part = 0; part < decomposed.size();) {
      scratch_ += nextScalar(decomposed, part);
    }
  }
  if (scratch_.size() > 1) sortMarks(scratch_);

  folded_.clear();
  for (const char32_t codePoint : scratch_) {
    const bool isMark = combiningClass(codePoint) != 0 ||
                        u_charType(static_cast<UChar32>(codePoint)) == U_NON_SPACING_MARK;
    if (!isMark || folding_.marks == Folding::Marks::kept) appendUnits(folded_, codePoint);
  }
}

}  // namespace zeb::detail
