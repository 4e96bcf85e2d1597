#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Logging/OLGLogging.h>
#include <ZEBPlatform/Text/NSRegularExpression.h>
#include <ZEBPlatform/Text/NSString+Normalization.h>
#include <ZEBPlatform/Text/NSString+Trimming.h>
#include <ZEBPlatform/Text/detail/StringUnits.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>
#include <ZEBUtilities/Encodings/NSData+CommonDigest.h>
#include <ZEBUtilities/Encodings/NSData+ZEBAdditions.h>
#include <ZEBUtilities/Text/NSString+ZEBAdditions.h>

#include <algorithm>
#include <atomic>

namespace zeb {

namespace {

constexpr NSRange notFound{NSNotFound, 0};
constexpr int notHexDigit = -1;

constexpr int hexDigitValue(char16_t unit) noexcept {
  if (unit >= u'0' && unit <= u'9') return unit - u'0';
  if (unit >= u'a' && unit <= u'f') return unit - u'a' + 10;
  if (unit >= u'A' && unit <= u'F') return unit - u'A' + 10;
  return notHexDigit;
}

// The tests of white space for both stored forms. No character of the set needs a pair.
auto whitespaceTest(std::string_view) {
  return [](char byte) { return byte == ' ' || (byte >= '\t' && byte <= '\r'); };
}
auto whitespaceTest(std::u16string_view) {
  return [&spaces = *NSCharacterSet::whitespaceAndNewlineCharacterSet()](char16_t unit) {
    return spaces.characterIsMember(unit);
  };
}

enum class TrimmedEnds { leading, trailing, both };

NSString withoutWhitespace(const NSString& string, TrimmedEnds ends) {
  return detail::withUnits(string, [&](auto units) {
    const auto isSpace = whitespaceTest(units);
    std::size_t begin = 0;
    std::size_t end = units.size();
    if (ends != TrimmedEnds::trailing) {
      while (begin < end && isSpace(units[begin])) ++begin;
    }
    if (ends != TrimmedEnds::leading) {
      while (end > begin && isSpace(units[end - 1])) --end;
    }
    if (end - begin == units.size()) return string;
    return detail::textOfUnits(units.substr(begin, end - begin));
  });
}

/// The expression for a run of white space; null and the error if it cannot be compiled, which the
/// next call tries again. If two first calls compile it, one of the results is dropped.
const NSRegularExpression* whitespaceExpression(NSError* error) {
  static std::atomic<NSRegularExpression*> kept{nullptr};
  if (NSRegularExpression* expression = kept.load(std::memory_order_acquire)) return expression;
  Ref<NSRegularExpression> compiled =
      NSRegularExpression::regularExpressionWithPattern("\\s+", 0, error);
  NSRegularExpression* expected = nullptr;
  if (!compiled) return nullptr;
  if (!kept.compare_exchange_strong(expected, compiled.get(), std::memory_order_acq_rel)) {
    return expected;
  }
  return compiled.leak();  // lives as long as the process
}

}  // namespace

NSString stringValue(const NSString& string) { return string; }

bool isNotEmptyAfterTrimmingWhitespace(const NSString& string) {
  return detail::withUnits(string, [](auto units) {
    return !std::all_of(units.begin(), units.end(), whitespaceTest(units));
  });
}

const Block<bool(const NSString& string)>& zeb_rejectEmptyStrippedStringsBlock() {
  static detail::NeverDestroyed<Block<bool(const NSString&)>> block(
      isNotEmptyAfterTrimmingWhitespace);
  return *block;
}

bool zeb_isCaseInsensitiveSameAsString(const NSString& string, const NSString& other) {
  return !other.isNil() && caseInsensitiveCompare(string, other) == NSOrderedSame;
}

bool zeb_containsString(const NSString& string, const NSString& part) {
  return string.containsString(part);
}

bool zeb_localizedCaseInsensitiveContainsString(const NSString& string, const NSString& part) {
  return localizedCaseInsensitiveContainsString(string, part);
}

bool zeb_hasPrefixIgnoringCase(const NSString& string, const NSString& prefix) {
  return rangeOfString(string, prefix, NSCaseInsensitiveSearch | NSAnchoredSearch).location == 0;
}

bool zeb_matchesPartialsSearchString(const NSString& string, const NSString& search) {
  if (string.isNil() || search.empty()) return false;
  const NSArray words =
      componentsSeparatedByCharactersInSet(search, NSCharacterSet::whitespaceCharacterSet());
  return std::all_of(words.begin(), words.end(), [&](const Value& word) {
    const NSString text(word);
    return text.empty() || localizedCaseInsensitiveContainsString(string, text);
  });
}

bool zeb_containsOnlyNumbers(const NSString& string) {
  if (string.empty()) return false;
  if (string.isASCII()) {
    const std::string_view bytes = string.asciiView();
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char byte) { return byte >= '0' && byte <= '9'; });
  }
  const NSCharacterSet& digits = *NSCharacterSet::decimalDigitCharacterSet();
  const std::u16string_view units = string.utf16View();
  for (std::size_t index = 0; index < units.size();) {
    if (!digits.longCharacterIsMember(detail::nextScalar(units, index))) return false;
  }
  return true;
}

bool zeb_containsOnlyHexNumbers(const NSString& string) {
  return !string.empty() && detail::withUnits(string, [](auto units) {
    return std::all_of(units.begin(), units.end(),
                       [](char16_t unit) { return hexDigitValue(unit) != notHexDigit; });
  });
}

std::uint64_t zeb_hexIntegerValue(const NSString& string) {
  return detail::withUnits(string, [](auto units) {
    std::uint64_t value = 0;
    for (const auto unit : units) {
      const int digit = hexDigitValue(static_cast<char16_t>(unit));
      if (digit == notHexDigit) break;
      value = value * 16 + static_cast<std::uint64_t>(digit);
    }
    return value;
  });
}

std::size_t zeb_lengthInCodePoints(const NSString& string) {
  if (string.isASCII()) return string.length();
  const NSString composed = precomposedStringWithCanonicalMapping(string);
  const std::u16string_view units = composed.utf16View();
  std::size_t count = 0;
  for (std::size_t index = 0; index < units.size(); ++count) detail::nextScalar(units, index);
  return count;
}

NSRange zeb_rangeOfCharactersFromSet(const NSString& string, const Ref<NSCharacterSet>& set) {
  return zeb_rangeOfCharactersFromSet(string, set, 0);
}

NSRange zeb_rangeOfCharactersFromSet(const NSString& string, const Ref<NSCharacterSet>& set,
                                     std::uint64_t options) {
  return zeb_rangeOfCharactersFromSet(string, set, options, {0, string.length()});
}

NSRange zeb_rangeOfCharactersFromSet(const NSString& string, const Ref<NSCharacterSet>& set,
                                     std::uint64_t options, NSRange range) {
  if (range.location == NSNotFound || range.length == 0 || range.location >= string.length()) {
    return notFound;
  }
  range.length = (std::min)(string.length() - range.location, range.length);
  const std::size_t found = rangeOfCharacterFromSet(string, set, options, range).location;
  if (found == NSNotFound) return notFound;
  return detail::withUnits(string, [&](auto units) -> NSRange {
    const auto isMember = [&](std::size_t index) {
      return set->characterIsMember(static_cast<char16_t>(units[index]));
    };
    if (options & NSBackwardsSearch) {
      std::size_t begin = found + 1;
      while (begin > range.location && isMember(begin - 1)) --begin;
      return {begin, found + 1 - begin};
    }
    std::size_t end = found;
    while (end < range.location + range.length && isMember(end)) ++end;
    return {found, end - found};
  });
}

NSString zeb_SHA1HashAsHexStringValue(const NSString& string) {
  if (string.isNil()) return nullptr;
  return zeb_hexStringValue(zeb_SHA1Hash(NSData::dataWithBytes(std::string_view(string.utf8()))));
}

NSString zeb_stringByConvertingWhitespaceToNonbreaking(const NSString& string) {
  NSError error;
  const NSRegularExpression* expression = whitespaceExpression(&error);
  if (!expression) {
    const char* const channel = ZEBUtilitiesLoggingChannel_Generic;
    if (OLGCanLog(nullptr, OLGLevelError, channel)) {
      OLGLogEx(nullptr, OLGLevelError, channel, "ZEBUtilities/ZEBUtilities/NSString+ZEBAdditions",
               "-[NSString(ZEBAdditions) zeb_stringByConvertingWhitespaceToNonbreaking]", 338,
               "Error compiling regular expression: %@", error);
    }
    return string;
  }
  const NSString result = expression->stringByReplacingMatchesInString(
      string, 0, {0, string.length()}, NSString(u"\u00A0"));
  return result.isNil() ? string : result;
}

NSString zeb_stringByTrimmingWhitespace(const NSString& string) {
  // A mutable text that needs no trimming is copied, unlike by the functions for one end.
  if (string.isMutable()) return withoutWhitespace(string.copy(), TrimmedEnds::both);
  return withoutWhitespace(string, TrimmedEnds::both);
}

NSString zeb_stringByTrimmingLeadingWhitespace(const NSString& string) {
  return withoutWhitespace(string, TrimmedEnds::leading);
}

NSString zeb_stringByTrimmingTrailingWhitespace(const NSString& string) {
  return withoutWhitespace(string, TrimmedEnds::trailing);
}

NSString zeb_stringByTrimmingTrailingSlash(const NSString& string) {
  return string.hasSuffix("/") ? string.substringToIndex(string.length() - 1) : string;
}

NSString zeb_stringByTrimmingLeadingOctothorpe(const NSString& string) {
  return string.hasPrefix("#") ? string.substringFromIndex(1) : string;
}

}  // namespace zeb
