#include <ZEBPlatform/Concurrency/detail/KeptByThread.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Text/NSCharacterSet.h>
#include <ZEBUtilities/Text/HTMLEntityTablePrivate.h>
#include <ZEBUtilities/Text/HTMLReferencesPrivate.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace zeb::detail {

namespace {

/// What may be a reference, from its "&" to its ";".
struct Candidate {
  std::size_t end;
  char32_t replacement;  ///< 0 if it is no reference or stands for nothing that may be used
};
constexpr Candidate noReference{0, 0};

constexpr bool isDigit(char16_t unit) noexcept { return unit >= u'0' && unit <= u'9'; }
constexpr char16_t lowercase(char16_t unit) noexcept {
  return static_cast<char16_t>(unit >= u'A' && unit <= u'Z' ? unit | 0x20 : unit);
}
/// The character with this number, or 0 if it is a control character below U+0020, a surrogate or
/// outside Unicode.
constexpr char32_t usableCharacter(std::uint64_t value) noexcept {
  const bool isUsable =
      (value >= 0x20 && value <= 0xD7FF) || (value >= 0xE000 && value <= 0x10FFFF);
  return isUsable ? static_cast<char32_t>(value) : 0;
}

/// Reads one reference. Texts are `std::string_view` or `std::u16string_view`.
template <class Text>
class ReferenceReader {
 public:
  ReferenceReader(Text text, std::size_t ampersand) noexcept : text_(text), place_(ampersand + 1) {}

  Candidate read() {
    if (unit() != u'#') return readName();
    ++place_;
    if (unit() != u'x' && unit() != u'X') return readDecimal();
    ++place_;
    return readHexadecimal();
  }

 private:
  /// The unit at the place; 0 at the end.
  char16_t unit() const noexcept {
    return place_ < text_.size() ? static_cast<char16_t>(text_[place_]) : u'\0';
  }
  Candidate ending(char32_t replacement) const noexcept {
    return unit() == u';' ? Candidate{place_ + 1, replacement} : noReference;
  }

  /// Characters that no name contains need not be looked for, because the table has no name with
  /// them; except for NUL, which would be taken for the end of a shorter name.
  Candidate readName() noexcept {
    PackedEntityName name = 0;
    const std::size_t start = place_;
    const std::size_t end = std::min(text_.size(), start + maxEntityNameLength + 1);
    for (; place_ < end && text_[place_] != u';'; ++place_) {
      const auto unit = static_cast<char16_t>(text_[place_]);
      if (unit == 0 || unit >= 0x80) return noReference;
      name = name << 8 | unit;
    }
    const std::size_t length = place_ - start;
    if (length == 0 || place_ == end) return noReference;
    return {place_ + 1, unitOfEntity(name << 8 * (maxEntityNameLength - length))};
  }

  /// All decimal digits of Unicode count as digits, but the value is that of the ASCII digits at
  /// the beginning, as the integer reading of a string has it, and saturates as that does.
  Candidate readDecimal() {
    const std::size_t start = place_;
    constexpr std::uint64_t maxValue = std::numeric_limits<std::int32_t>::max();
    std::uint64_t value = 0;
    for (; isDigit(unit()); ++place_) {
      value = std::min<std::uint64_t>(value * 10 + (unit() - u'0'), maxValue);
    }
    skipDigits();
    return place_ > start ? ending(usableCharacter(value)) : noReference;
  }

  /// The value is calculated modulo 2^64.
  Candidate readHexadecimal() noexcept {
    const std::size_t start = place_;
    std::uint64_t value = 0;
    for (;; ++place_) {
      const char16_t digit = lowercase(unit());
      if (isDigit(digit)) {
        value = value << 4 | static_cast<std::uint64_t>(digit - u'0');
      } else if (digit >= u'a' && digit <= u'f') {
        value = value << 4 | static_cast<std::uint64_t>(digit - u'a' + 10);
      } else {
        return place_ > start ? ending(usableCharacter(value)) : noReference;
      }
    }
  }

  /// Goes behind the decimal digits, of any script, at the place.
  void skipDigits() {
    if constexpr (sizeof(text_[0]) > 1) {
      if (unit() < 0x80) return;
      const NSCharacterSet& digits = *NSCharacterSet::decimalDigitCharacterSet();
      while (place_ < text_.size()) {
        std::size_t next = place_;
        if (!digits.longCharacterIsMember(nextScalar(text_, next))) return;
        place_ = next;
      }
    }
  }

  Text text_;
  std::size_t place_;
};

std::size_t findAmpersand(std::string_view text, std::size_t from) noexcept {
  return text.find('&', from);
}

std::size_t findAmpersand(std::u16string_view text, std::size_t from) noexcept {
  // Blocks of a length that the compiler knows are searched with vectors.
  constexpr std::size_t blockLength = 32;
  for (; text.size() - from >= blockLength; from += blockLength) {
    std::uint16_t found = 0;
    for (std::size_t i = 0; i < blockLength; ++i) {
      found = static_cast<std::uint16_t>(found | (text[from + i] == u'&'));
    }
    if (found) break;
  }
  return text.find(u'&', from);
}

template <class Text>
void findReferences(Text text, std::vector<HTMLReference>& references) {
  std::uint32_t shrink = 0;
  for (std::size_t place = findAmpersand(text, 0); place != text.npos;) {
    const Candidate candidate = ReferenceReader(text, place).read();
    std::size_t next = place + 1;
    if (candidate.replacement) {
      next = candidate.end;
      references.push_back({static_cast<std::uint32_t>(place), static_cast<std::uint32_t>(next),
                            candidate.replacement, shrink});
      shrink += references.back().shrink();
    }
    place = findAmpersand(text, next);
  }
}

constexpr std::size_t maxKeptReferences = 128 * 1024 / sizeof(HTMLReference);

using KeptList = KeptByThread<std::vector<HTMLReference>>;

}  // namespace

HTMLReferences::HTMLReferences() : list_(KeptList::take()) {
  if (!list_) list_ = std::make_unique<std::vector<HTMLReference>>();
}

HTMLReferences::HTMLReferences(std::string_view ascii) : HTMLReferences() {
  findReferences(ascii, *list_);
}

HTMLReferences::HTMLReferences(std::u16string_view units) : HTMLReferences() {
  findReferences(units, *list_);
}

HTMLReferences::~HTMLReferences() {
  if (list_->capacity() > maxKeptReferences) return;
  list_->clear();
  KeptList::give(std::move(list_));
}

}  // namespace zeb::detail
