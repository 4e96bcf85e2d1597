#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Text/FoldedTextPrivate.h>
#include <ZEBPlatform/Text/NSString+Searching.h>
#include <ZEBPlatform/Text/detail/StringUnits.h>
#include <unicode/uchar.h>

#include <array>
#include <cstdint>
#include <vector>

namespace zeb {

namespace {

using detail::FoldedText;
using detail::FoldedUnit;
using detail::Folding;

constexpr NSRange notFound{NSNotFound, 0};

// Texts unit by unit, as `FoldedText`, for the cases that need less.

/// The folded form of ASCII.
class FoldedASCII {
 public:
  FoldedASCII(std::string_view bytes, Folding folding) : bytes_(bytes), folding_(folding) {}

  bool next(FoldedUnit& unit) {
    if (position_ == bytes_.size()) return false;
    unit.begin = position_;
    unit.unit = folded(static_cast<unsigned char>(bytes_[position_++]));
    unit.end = position_;
    return true;
  }

 private:
  char16_t folded(unsigned char byte) const noexcept {
    if (folding_.letterCase == Folding::Case::kept || byte < 'A' || byte > 'Z') return byte;
    if (byte == 'I' && folding_.letterCase == Folding::Case::ignoredAsInTurkish) return u'\u0131';
    return static_cast<char16_t>(byte + ('a' - 'A'));
  }

  std::string_view bytes_;
  Folding folding_;
  std::size_t position_ = 0;
};

/// The text as it is, or with the case of single code points folded.
class LiteralText {
 public:
  LiteralText(std::u16string_view units, Folding folding)
      : units_(units),
        ignoresCase_(folding.letterCase != Folding::Case::kept),
        options_(folding.letterCase == Folding::Case::ignoredAsInTurkish
                     ? U_FOLD_CASE_EXCLUDE_SPECIAL_I
                     : U_FOLD_CASE_DEFAULT) {}

  bool next(FoldedUnit& unit) {
    if (second_) {
      unit = {second_, FoldedUnit::noBoundary, position_};
      second_ = 0;
      return true;
    }
    if (position_ == units_.size()) return false;
    unit.begin = position_;
    char32_t codePoint = detail::nextScalar(units_, position_);
    if (ignoresCase_) {
      codePoint = static_cast<char32_t>(u_foldCase(static_cast<UChar32>(codePoint), options_));
    }
    if (codePoint > 0xFFFF) {
      unit.unit = static_cast<char16_t>(U16_LEAD(codePoint));
      unit.end = FoldedUnit::noBoundary;
      second_ = static_cast<char16_t>(U16_TRAIL(codePoint));
    } else {
      unit.unit = static_cast<char16_t>(codePoint);
      unit.end = position_;
    }
    return true;
  }

 private:
  std::u16string_view units_;
  bool ignoresCase_;
  std::uint32_t options_;
  std::size_t position_ = 0;
  char16_t second_ = 0;  ///< of a pair whose first unit was answered
};

Folding foldingOf(std::uint64_t options, const Ref<NSLocale>& locale) {
  Folding folding;
  if (options & NSDiacriticInsensitiveSearch) folding.marks = Folding::Marks::ignored;
  if (options & NSCaseInsensitiveSearch) {
    folding.letterCase = Folding::Case::ignored;
    const NSString language = locale ? locale->languageCode() : NSString();
    if (language.isEqualToString("tr") || language.isEqualToString("az")) {
      folding.letterCase = Folding::Case::ignoredAsInTurkish;
    }
  }
  return folding;
}

/// Calls `use` with the folded form of that part of the text.
template <class Use>
auto withFolded(const NSString& string, NSRange range, std::uint64_t options, Folding folding,
                const Use& use) {
  if (string.isASCII()) {
    return use(FoldedASCII(string.asciiView().substr(range.location, range.length), folding));
  }
  const std::u16string_view units = string.utf16View().substr(range.location, range.length);
  return options & NSLiteralSearch ? use(LiteralText(units, folding))
                                   : use(FoldedText(units, folding));
}

std::u16string foldedUnits(const NSString& string, std::uint64_t options, Folding folding) {
  return withFolded(string, {0, string.length()}, options, folding, [](auto text) {
    std::u16string units;
    for (FoldedUnit unit; text.next(unit);) units += unit.unit;
    return units;
  });
}

/// Of each beginning of the pattern, how long the longest shorter beginning is that it ends with
/// (Knuth, Morris and Pratt). With it a search looks at each unit of a text once.
std::vector<std::uint32_t> overlapsOf(std::u16string_view pattern) {
  std::vector<std::uint32_t> overlaps(pattern.size(), 0);
  std::uint32_t matched = 0;
  for (std::size_t index = 1; index < pattern.size(); ++index) {
    while (matched > 0 && pattern[index] != pattern[matched]) matched = overlaps[matched - 1];
    if (pattern[index] == pattern[matched]) ++matched;
    overlaps[index] = matched;
  }
  return overlaps;
}

/// The first occurrence of the pattern, or the last one.
template <class Text>
NSRange occurrence(Text text, std::u16string_view pattern, bool isLastWanted) {
  const std::vector<std::uint32_t> overlaps = overlapsOf(pattern);
  // Where the latest units began, as many as the pattern has; the oldest one is replaced first.
  std::vector<std::size_t> begins(pattern.size());
  std::size_t oldest = 0;
  std::size_t matched = 0;
  NSRange found = notFound;
  for (FoldedUnit unit; text.next(unit);) {
    begins[oldest] = unit.begin;
    if (++oldest == begins.size()) oldest = 0;
    while (matched > 0 && pattern[matched] != unit.unit) matched = overlaps[matched - 1];
    if (pattern[matched] == unit.unit) ++matched;
    if (matched < pattern.size()) continue;
    if (begins[oldest] != FoldedUnit::noBoundary && unit.end != FoldedUnit::noBoundary) {
      found = {begins[oldest], unit.end - begins[oldest]};
      if (!isLastWanted) break;
    }
    matched = overlaps[matched - 1];
  }
  return found;
}

/// The length of the beginning of the text that is equal to the pattern; 0 if there is none.
template <class Text>
std::size_t matchingPrefix(Text text, std::u16string_view pattern) {
  FoldedUnit unit{};
  for (const char16_t wanted : pattern) {
    if (!text.next(unit) || unit.unit != wanted) return 0;
  }
  return unit.end == FoldedUnit::noBoundary ? 0 : unit.end;
}

template <class Left, class Right>
NSComparisonResult compareFolded(Left left, Right right) {
  FoldedUnit leftUnit;
  FoldedUnit rightUnit;
  for (;;) {
    const bool hasLeft = left.next(leftUnit);
    const bool hasRight = right.next(rightUnit);
    if (!hasLeft && !hasRight) return NSOrderedSame;
    if (!hasLeft || !hasRight) return hasLeft ? NSOrderedDescending : NSOrderedAscending;
    if (leftUnit.unit != rightUnit.unit) {
      return leftUnit.unit < rightUnit.unit ? NSOrderedAscending : NSOrderedDescending;
    }
  }
}

/// Whether folding the case of the text depends on the language.
bool dependsOnLanguage(const NSString& string) {
  return detail::withUnits(string, [](auto units) {
    for (const auto stored : units) {
      const auto unit = static_cast<char16_t>(stored);
      if (unit == u'i' || unit == u'I' || unit == u'\u0130' || unit == u'\u0131') return true;
    }
    return false;
  });
}

bool containsInCurrentLocale(const NSString& string, const NSString& part, std::uint64_t options) {
  if (string.empty() || part.empty()) return false;
  const Ref<NSLocale> locale = dependsOnLanguage(part) ? NSLocale::currentLocale() : nullptr;
  return rangeOfString(string, part, options, {0, string.length()}, locale).location != NSNotFound;
}

bool isMemberInAnyCase(const NSCharacterSet& set, char32_t character) {
  const auto codePoint = static_cast<UChar32>(character);
  return set.longCharacterIsMember(character) ||
         set.longCharacterIsMember(static_cast<char32_t>(u_tolower(codePoint))) ||
         set.longCharacterIsMember(static_cast<char32_t>(u_toupper(codePoint))) ||
         set.longCharacterIsMember(static_cast<char32_t>(u_totitle(codePoint)));
}

/// `isWanted` tests a character.
template <class Units, class Test>
NSRange rangeOfCharacter(Units units, std::uint64_t options, const Test& isWanted) {
  const bool isAnchored = options & NSAnchoredSearch;
  if (options & NSBackwardsSearch) {
    for (std::size_t begin = units.size(); begin > 0;) {
      const std::size_t end = begin;
      if (isWanted(detail::previousCharacter(units, begin))) return {begin, end - begin};
      if (isAnchored) break;
    }
    return notFound;
  }
  for (std::size_t end = 0; end < units.size();) {
    const std::size_t begin = end;
    if (isWanted(detail::nextCharacter(units, end))) return {begin, end - begin};
    if (isAnchored) break;
  }
  return notFound;
}

}  // namespace

NSComparisonResult caseInsensitiveCompare(const NSString& string, const NSString& other) {
  if (string.isNil() || other.isNil()) return string.compare(other);
  const Folding folding = foldingOf(NSCaseInsensitiveSearch, nullptr);
  return withFolded(string, {0, string.length()}, 0, folding, [&](auto left) {
    return withFolded(other, {0, other.length()}, 0, folding,
                      [&](auto right) { return compareFolded(std::move(left), std::move(right)); });
  });
}

NSRange rangeOfString(const NSString& string, const NSString& part, std::uint64_t options,
                      NSRange range, const Ref<NSLocale>& locale) {
  if (string.isNil() || part.empty()) return notFound;
  requireRange(range, string.length());
  const Folding folding = foldingOf(options, locale);
  const std::u16string pattern = foldedUnits(part, options, folding);
  if (pattern.empty()) return notFound;  // only ignored marks
  const bool isBackwards = options & NSBackwardsSearch;
  const bool isAnchored = options & NSAnchoredSearch;
  NSRange found = withFolded(string, range, options, folding, [&](auto text) -> NSRange {
    if (!isAnchored || isBackwards) return occurrence(std::move(text), pattern, isBackwards);
    const std::size_t length = matchingPrefix(std::move(text), pattern);
    return length == 0 ? notFound : NSRange{0, length};
  });
  if (found.location == NSNotFound) return notFound;
  if (isAnchored && isBackwards && found.location + found.length != range.length) return notFound;
  found.location += range.location;
  return found;
}

NSRange rangeOfString(const NSString& string, const NSString& part, std::uint64_t options) {
  return rangeOfString(string, part, options, {0, string.length()});
}

bool localizedCaseInsensitiveContainsString(const NSString& string, const NSString& part) {
  return containsInCurrentLocale(string, part, NSCaseInsensitiveSearch);
}

bool localizedStandardContainsString(const NSString& string, const NSString& part) {
  return containsInCurrentLocale(string, part,
                                 NSCaseInsensitiveSearch | NSDiacriticInsensitiveSearch);
}

NSRange rangeOfCharacterFromSet(const NSString& string, const Ref<NSCharacterSet>& set,
                                std::uint64_t options, NSRange range) {
  if (string.isNil() || !set) return notFound;
  requireRange(range, string.length());
  NSRange found = detail::withUnits(string, [&](auto units) {
    const auto part = units.substr(range.location, range.length);
    if (options & NSCaseInsensitiveSearch) {
      return rangeOfCharacter(
          part, options, [&](char32_t character) { return isMemberInAnyCase(*set, character); });
    }
    return rangeOfCharacter(
        part, options, [&](char32_t character) { return set->longCharacterIsMember(character); });
  });
  if (found.location != NSNotFound) found.location += range.location;
  return found;
}

NSRange rangeOfCharacterFromSet(const NSString& string, const Ref<NSCharacterSet>& set,
                                std::uint64_t options) {
  return rangeOfCharacterFromSet(string, set, options, {0, string.length()});
}

}  // namespace zeb
