#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Text/ICUTextPrivate.h>
#include <ZEBPlatform/Text/NSRegularExpression.h>
#include <ZEBPlatform/Text/SparesPrivate.h>
#include <ZEBPlatform/Text/detail/StringUnits.h>
#include <unicode/uregex.h>

#include <algorithm>
#include <array>
#include <chrono>

namespace zeb {

namespace {

using Clock = std::chrono::steady_clock;
constexpr Clock::duration minSearchTime = std::chrono::seconds(1);
constexpr Clock::duration searchTimePerUnit = std::chrono::microseconds(2);
/// ICU asks whether to go on after each place where it has looked for a match, and each 10,000
/// steps in between. With back-references a step can take as long as comparing the whole text.
constexpr unsigned placesPerLookAtClock = 16;
constexpr std::int64_t minBacktrackingBytes = 8'000'000;
constexpr std::int64_t backtrackingBytesPerUnit = 32;
/// The matchers of longer texts are not kept, because they may have grown with the text.
constexpr std::size_t maxTextOfSpare = 65'536;

/// Flags of both kinds, one after the other.
constexpr std::pair<std::uint64_t, std::uint32_t> flagsOfOptions[] = {
    {NSRegularExpressionCaseInsensitive, UREGEX_CASE_INSENSITIVE},
    {NSRegularExpressionAllowCommentsAndWhitespace, UREGEX_COMMENTS},
    {NSRegularExpressionIgnoreMetacharacters, UREGEX_LITERAL},
    {NSRegularExpressionDotMatchesLineSeparators, UREGEX_DOTALL},
    {NSRegularExpressionAnchorsMatchLines, UREGEX_MULTILINE},
    {NSRegularExpressionUseUnixLineSeparators, UREGEX_UNIX_LINES},
    {NSRegularExpressionUseUnicodeWordBoundaries, UREGEX_UWORD},
};

std::uint32_t flagsOf(std::uint64_t options) noexcept {
  std::uint32_t flags = 0;
  for (const auto& [option, flag] : flagsOfOptions) {
    if (options & option) flags |= flag;
  }
  return flags;
}

NSError errorWithText(const NSString& text) {
  return NSError(NSCocoaErrorDomain, NSFormattingError,
                 {{NSString(NSLocalizedDescriptionKey), text}});
}

NSError searchError(UErrorCode status) {
  if (status == U_REGEX_STOPPED_BY_CALLER) {
    return errorWithText(
        "Searching for the regular expression was stopped because it took too long.");
  }
  if (status == U_REGEX_STACK_OVERFLOW) {
    return errorWithText(
        "Searching for the regular expression was stopped because it needed too much memory.");
  }
  return errorWithText(NSString::stringWithFormat(
      "Searching for the regular expression failed with the error %s.", u_errorName(status)));
}

/// Whether the pattern has what looks like a back-reference: a backslash before a digit or "k".
bool hasBackReference(std::u16string_view pattern) noexcept {
  for (std::size_t index = 0; index + 1 < pattern.size(); ++index) {
    if (pattern[index] != u'\\') continue;
    const char16_t unit = pattern[++index];
    if ((unit >= u'1' && unit <= u'9') || unit == u'k') return true;
  }
  return false;
}

std::int32_t limit(std::int64_t value) noexcept {
  return static_cast<std::int32_t>((std::min)(value, std::int64_t{INT32_MAX}));
}

NSRange rangeOfGroup(URegularExpression* matcher, std::size_t group) {
  UErrorCode status = U_ZERO_ERROR;
  const std::int64_t begin = uregex_start64(matcher, static_cast<std::int32_t>(group), &status);
  const std::int64_t end = uregex_end64(matcher, static_cast<std::int32_t>(group), &status);
  if (U_FAILURE(status) || begin < 0 || end < begin) return {NSNotFound, 0};
  return {static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin)};
}

/// The parts of a template: plain text, followed by the text of a group if there is one.
struct TemplatePart {
  static constexpr std::size_t noGroup = SIZE_MAX;

  std::u16string text;
  std::size_t group = noGroup;
};

constexpr bool isDigit(char16_t unit) noexcept { return unit >= u'0' && unit <= u'9'; }

std::vector<TemplatePart> partsOfTemplate(std::u16string_view text, std::size_t groups) {
  std::vector<TemplatePart> parts(1);
  for (std::size_t index = 0; index < text.size(); ++index) {
    const bool isFollowed = index + 1 < text.size();
    if (text[index] == u'$' && isFollowed && isDigit(text[index + 1])) {
      std::size_t group = static_cast<std::size_t>(text[++index] - u'0');
      while (index + 1 < text.size() && isDigit(text[index + 1])) {
        const std::size_t longer = group * 10 + static_cast<std::size_t>(text[index + 1] - u'0');
        if (longer > groups) break;
        group = longer;
        ++index;
      }
      parts.back().group = group;
      parts.emplace_back();
    } else {
      if (text[index] == u'\\' && isFollowed) ++index;
      parts.back().text += text[index];
    }
  }
  return parts;
}

/// With a backslash before each of the characters.
NSString withEscaped(const NSString& string, std::u16string_view characters) {
  if (string.isNil()) return nullptr;
  std::u16string result;
  for (const char16_t unit : string.utf16()) {
    if (characters.find(unit) != characters.npos) result += u'\\';
    result += unit;
  }
  return NSString(std::u16string_view(result));
}

}  // namespace

struct NSRegularExpression::Compiled {
  Compiled(URegularExpression* compiled, bool refersBack)
      : prototype(compiled), hasBackReference(refersBack) {}
  ~Compiled() { uregex_close(prototype); }
  Compiled(const Compiled&) = delete;
  Compiled& operator=(const Compiled&) = delete;

  /// Never used for searching, so that threads may copy it at the same time.
  URegularExpression* const prototype;
  const bool hasBackReference;
  detail::Spares<URegularExpression, uregex_close> spares;
};

namespace {

using Compiled = NSRegularExpression::Compiled;

/// A matcher for one search.
class Matcher {
 public:
  Matcher(Compiled& compiled, std::u16string_view text, UErrorCode& status)
      : compiled_(compiled), length_(text.size()), matcher_(compiled.spares.take()) {
    if (!matcher_) matcher_ = uregex_clone(compiled.prototype, &status);
    const auto length = static_cast<std::int64_t>(length_);
    deadline_ = Clock::now() + minSearchTime + length * searchTimePerUnit;
    uregex_setMatchCallback(matcher_, mayStep, this, &status);
    uregex_setFindProgressCallback(matcher_, mayGoOn, this, &status);
    uregex_setStackLimit(matcher_,
                         limit((std::max)(minBacktrackingBytes, length * backtrackingBytesPerUnit)),
                         &status);
    uregex_setText(matcher_, text.data(), static_cast<std::int32_t>(text.size()), &status);
  }
  Matcher(const Matcher&) = delete;
  Matcher& operator=(const Matcher&) = delete;
  ~Matcher() {
    if (length_ > maxTextOfSpare) {
      uregex_close(matcher_);
    } else if (matcher_) {
      compiled_.spares.give(matcher_);
    }
  }

  URegularExpression* get() const noexcept { return matcher_; }
  bool isLate() const { return !mayGoOn(this, 0); }

 private:
  static UBool U_CALLCONV mayStep(const void* context, std::int32_t) {
    return Clock::now() < static_cast<const Matcher*>(context)->deadline_;
  }
  static UBool U_CALLCONV mayGoOn(const void* context, std::int64_t) {
    const auto& matcher = *static_cast<const Matcher*>(context);
    return ++matcher.places_ % placesPerLookAtClock != 0 || mayStep(context, 0);
  }

  Compiled& compiled_;
  std::size_t length_;
  URegularExpression* matcher_;
  Clock::time_point deadline_;
  mutable unsigned places_ = 0;
};

}  // namespace

NSRange NSTextCheckingResult::rangeAtIndex(std::size_t index) const {
  if (index >= ranges_.size()) raiseRange(index, ranges_.size());
  return ranges_[index];
}

Ref<NSRegularExpression> NSRegularExpression::regularExpressionWithPattern(const NSString& pattern,
                                                                           std::uint64_t options,
                                                                           NSError* error) {
  const auto fail = [&](const NSString& text) -> Ref<NSRegularExpression> {
    if (error) *error = errorWithText(text);
    return nullptr;
  };
  if (pattern.isNil()) return fail("A regular expression needs a pattern.");
  if (pattern.length() > maxPatternLength) {
    return fail(NSString::stringWithFormat(
        "The pattern of a regular expression has %zu code units; at most %zu are possible.",
        pattern.length(), maxPatternLength));
  }
  const std::u16string units = pattern.utf16();
  UErrorCode status = U_ZERO_ERROR;
  UParseError place{};
  // ICU has no empty patterns; an empty group matches the same.
  const std::u16string_view compiledUnits = units.empty() ? u"(?:)" : std::u16string_view(units);
  const std::uint64_t used =
      units.empty() ? options & ~std::uint64_t{NSRegularExpressionIgnoreMetacharacters} : options;
  URegularExpression* compiled =
      uregex_open(compiledUnits.data(), static_cast<std::int32_t>(compiledUnits.size()),
                  flagsOf(used), &place, &status);
  if (U_FAILURE(status)) {
    uregex_close(compiled);
    return fail(NSString::stringWithFormat(
        "The pattern \"%@\" is no regular expression: %s in line %d, character %d.", pattern,
        u_errorName(status), place.line, place.offset));
  }
  return makeRef<NSRegularExpression>(
      pattern.copy(), options,
      std::make_unique<Compiled>(
          compiled, !(used & NSRegularExpressionIgnoreMetacharacters) && hasBackReference(units)));
}

NSRegularExpression::NSRegularExpression(const NSString& pattern, std::uint64_t options,
                                         std::unique_ptr<Compiled> compiled)
    : pattern_(pattern), options_(options), compiled_(std::move(compiled)) {
  UErrorCode status = U_ZERO_ERROR;
  groups_ = static_cast<std::size_t>(uregex_groupCount(compiled_->prototype, &status));
}

NSRegularExpression::~NSRegularExpression() = default;

NSString NSRegularExpression::escapedPatternForString(const NSString& string) {
  return withEscaped(string, u"\\*?+[](){}^$|./-&#");
}

NSString NSRegularExpression::escapedTemplateForString(const NSString& string) {
  return withEscaped(string, u"\\$");
}

template <class Visit>
bool NSRegularExpression::search(const NSString& string, std::uint64_t options, NSRange range,
                                 NSError* error, const Visit& visit) const {
  if (string.isNil()) return true;
  requireRange(range, string.length());
  if (compiled_->hasBackReference && range.length > maxTextForBackReferences) {
    if (error) {
      *error = errorWithText(NSString::stringWithFormat(
          "A regular expression with a back-reference searches at most %zu code units at once, not "
          "%zu.",
          maxTextForBackReferences, range.length));
    }
    return false;
  }
  UErrorCode status = U_ZERO_ERROR;
  if (detail::fitsICU(string.length())) {
    const NSString kept = string.copy();  // the visitor may change a mutable text
    const std::u16string widened = kept.isASCII() ? kept.utf16() : std::u16string();
    // ICU takes null as "no text", also of an empty text.
    const std::u16string_view text = kept.isASCII() ? widened : kept.utf16View();
    const Matcher matcher(*compiled_, text, status);
    uregex_useAnchoringBounds(matcher.get(), !(options & NSMatchingWithoutAnchoringBounds),
                              &status);
    uregex_useTransparentBounds(matcher.get(), (options & NSMatchingWithTransparentBounds) != 0,
                                &status);
    uregex_setRegion(matcher.get(), static_cast<std::int32_t>(range.location),
                     static_cast<std::int32_t>(range.location + range.length), &status);
    if (options & NSMatchingAnchored) {
      if (uregex_lookingAt(matcher.get(), -1, &status)) visit(matcher.get());
    } else {
      while (uregex_findNext(matcher.get(), &status) && visit(matcher.get())) {
        if (matcher.isLate()) status = U_REGEX_STOPPED_BY_CALLER;
      }
    }
  } else {
    status = U_INDEX_OUTOFBOUNDS_ERROR;
  }
  if (U_SUCCESS(status)) return true;
  if (error) *error = searchError(status);
  return false;
}

bool NSRegularExpression::enumerateMatchesInString(
    const NSString& string, std::uint64_t options, NSRange range,
    FunctionView<bool(const Ref<NSTextCheckingResult>& result)> block, NSError* error) const {
  return search(string, options, range, error, [&](URegularExpression* matcher) {
    std::vector<NSRange> ranges;
    ranges.reserve(groups_ + 1);
    for (std::size_t group = 0; group <= groups_; ++group) {
      ranges.push_back(rangeOfGroup(matcher, group));
    }
    return block(makeRef<NSTextCheckingResult>(std::move(ranges)));
  });
}

std::vector<Ref<NSTextCheckingResult>> NSRegularExpression::matchesInString(const NSString& string,
                                                                            std::uint64_t options,
                                                                            NSRange range,
                                                                            NSError* error) const {
  std::vector<Ref<NSTextCheckingResult>> results;
  enumerateMatchesInString(
      string, options, range,
      [&](const Ref<NSTextCheckingResult>& result) {
        results.push_back(result);
        return true;
      },
      error);
  return results;
}

std::size_t NSRegularExpression::numberOfMatchesInString(const NSString& string,
                                                         std::uint64_t options, NSRange range,
                                                         NSError* error) const {
  std::size_t count = 0;
  search(string, options, range, error, [&](URegularExpression*) {
    ++count;
    return true;
  });
  return count;
}

Ref<NSTextCheckingResult> NSRegularExpression::firstMatchInString(const NSString& string,
                                                                  std::uint64_t options,
                                                                  NSRange range,
                                                                  NSError* error) const {
  Ref<NSTextCheckingResult> first;
  enumerateMatchesInString(
      string, options, range,
      [&](const Ref<NSTextCheckingResult>& result) {
        first = result;
        return false;
      },
      error);
  return first;
}

NSRange NSRegularExpression::rangeOfFirstMatchInString(const NSString& string,
                                                       std::uint64_t options, NSRange range,
                                                       NSError* error) const {
  NSRange found{NSNotFound, 0};
  search(string, options, range, error, [&](URegularExpression* matcher) {
    found = rangeOfGroup(matcher, 0);
    return false;
  });
  return found;
}

NSString NSRegularExpression::stringByReplacingMatchesInString(const NSString& string,
                                                               std::uint64_t options, NSRange range,
                                                               const NSString& withTemplate,
                                                               NSError* error) const {
  if (string.isNil()) return nullptr;
  const std::vector<TemplatePart> parts = partsOfTemplate(withTemplate.utf16(), groups_);
  const std::u16string text = string.utf16();
  std::u16string result;
  std::size_t copied = 0;
  bool isTooLong = false;
  const bool isComplete = search(string, options, range, error, [&](URegularExpression* matcher) {
    const NSRange match = rangeOfGroup(matcher, 0);
    result.append(text, copied, match.location - copied);
    copied = match.location + match.length;
    for (const TemplatePart& part : parts) {
      isTooLong = result.size() > text.size() + maxGrowth;
      if (isTooLong) return false;
      result += part.text;
      if (part.group > groups_) continue;
      const NSRange group = rangeOfGroup(matcher, part.group);
      if (group.location != NSNotFound) result.append(text, group.location, group.length);
    }
    return true;
  });
  if (isTooLong && error) {
    *error = errorWithText(NSString::stringWithFormat(
        "Replacing the matches of a regular expression was stopped because the result is longer "
        "than the text by more than %zu code units.",
        maxGrowth));
  }
  if (!isComplete || isTooLong) return nullptr;
  if (copied == 0 && result.empty()) return string.copy();
  result.append(text, copied);
  return NSString(std::u16string_view(result));
}

}  // namespace zeb
