#pragma once

#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/FunctionView.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace zeb {

enum : std::int64_t {
  /// A pattern is malformed, or a search was stopped; the description says why.
  NSFormattingError = 2048,
};

/// How a pattern is understood; bits to combine.
enum NSRegularExpressionOptions : std::uint64_t {
  NSRegularExpressionCaseInsensitive = 1,
  NSRegularExpressionAllowCommentsAndWhitespace = 2,
  /// The pattern is a plain text.
  NSRegularExpressionIgnoreMetacharacters = 4,
  NSRegularExpressionDotMatchesLineSeparators = 8,
  NSRegularExpressionAnchorsMatchLines = 16,
  /// Only U+000A ends a line.
  NSRegularExpressionUseUnixLineSeparators = 32,
  /// "\b" follows the word boundaries of Unicode (UAX #29).
  NSRegularExpressionUseUnicodeWordBoundaries = 64,
};

/// How a text is searched; bits to combine.
enum NSMatchingOptions : std::uint64_t {
  /// The only possible match is the one at the beginning of the range.
  NSMatchingAnchored = 4,
  /// Look-ahead and word boundaries see the text outside the range. Look-behind always does.
  NSMatchingWithTransparentBounds = 8,
  /// "^" and "$" do not match at the ends of the range unless these are ends of the text.
  NSMatchingWithoutAnchoringBounds = 16,
};

/// One match of an expression. Immutable; any thread.
class NSTextCheckingResult : public NSObject {
 public:
  /// Of the whole match.
  NSRange range() const noexcept { return ranges_.front(); }
  /// One more than the expression has capture groups.
  std::size_t numberOfRanges() const noexcept { return ranges_.size(); }
  /// Of the capture group with this number, 0 being the whole match. {NSNotFound, 0} if the group
  /// took no part in the match. Throws NSException (NSRangeException) if there is no such group.
  NSRange rangeAtIndex(std::size_t index) const;

  std::string className() const override { return "NSTextCheckingResult"; }

  /// For the expression only: the range of the match, then those of its groups.
  explicit NSTextCheckingResult(std::vector<NSRange> ranges) : ranges_(std::move(ranges)) {}

 private:
  std::vector<NSRange> ranges_;
};

/// A compiled regular expression, in the syntax of ICU. Immutable; any thread, and several threads
/// at once. Compiling usually takes microseconds, so keep the expression. Ranges count code units;
/// a match never splits a surrogate pair.
///
/// Neither a hostile pattern nor a hostile text blocks the caller for long. A pattern has at most
/// `maxPatternLength` code units; compiling the worst ones, which intersect hundreds of sets
/// without regard to case, takes about a second. A search stops with an error soon after one second
/// and two microseconds for each code unit of the text, or if what it remembers for going back
/// takes more than 8 MB and more than 32 bytes for each code unit of the text. Patterns whose time
/// grows with the square of the text's length therefore fail on long texts. Patterns with
/// back-references search at most `maxTextForBackReferences` code units at once. Texts of more than
/// 2^31 - 1 code units are an error, too, and so are results that are longer than the text by more
/// than `maxGrowth`.
///
/// The searching functions fill `error` if a search stops so, and answer what they have found until
/// then; replacing answers nil. They find nothing in a nil text. They throw NSException
/// (NSRangeException) if the range reaches past the end of the text.
class NSRegularExpression : public NSObject {
 public:
  static constexpr std::size_t maxPatternLength = 4'096;
  static constexpr std::size_t maxTextForBackReferences = 4'096;
  static constexpr std::size_t maxGrowth = 100'000'000;

  /// Nil if the pattern is nil, too long or malformed; then the error, of NSCocoaErrorDomain with
  /// the code NSFormattingError, says why and where.
  static Ref<NSRegularExpression> regularExpressionWithPattern(const NSString& pattern,
                                                               std::uint64_t options = 0,
                                                               NSError* error = nullptr);

  /// A pattern that matches exactly this text.
  static NSString escapedPatternForString(const NSString& string);
  /// A template that is replaced by exactly this text.
  static NSString escapedTemplateForString(const NSString& string);

  const NSString& pattern() const noexcept { return pattern_; }
  std::uint64_t options() const noexcept { return options_; }
  std::size_t numberOfCaptureGroups() const noexcept { return groups_; }

  /// Calls `block` with each match from the first one on, until it answers false. True unless the
  /// search stopped with an error. No lock is held during the calls.
  bool enumerateMatchesInString(const NSString& string, std::uint64_t options, NSRange range,
                                FunctionView<bool(const Ref<NSTextCheckingResult>& result)> block,
                                NSError* error = nullptr) const;
  std::vector<Ref<NSTextCheckingResult>> matchesInString(const NSString& string,
                                                         std::uint64_t options, NSRange range,
                                                         NSError* error = nullptr) const;
  std::size_t numberOfMatchesInString(const NSString& string, std::uint64_t options, NSRange range,
                                      NSError* error = nullptr) const;
  /// Nil if there is none.
  Ref<NSTextCheckingResult> firstMatchInString(const NSString& string, std::uint64_t options,
                                               NSRange range, NSError* error = nullptr) const;
  /// {NSNotFound, 0} if there is none.
  NSRange rangeOfFirstMatchInString(const NSString& string, std::uint64_t options, NSRange range,
                                    NSError* error = nullptr) const;

  /// The whole text, with each match inside the range replaced by the template. In the template,
  /// "$" with a number means the text of that capture group, empty if there is no such group, and a
  /// backslash takes its meaning from the character after it. A number takes as many digits as give
  /// an existing group. The text itself, or a copy of a mutable text, if nothing matches.
  [[nodiscard]] NSString stringByReplacingMatchesInString(const NSString& string,
                                                          std::uint64_t options, NSRange range,
                                                          const NSString& withTemplate,
                                                          NSError* error = nullptr) const;

  std::string className() const override { return "NSRegularExpression"; }

  struct Compiled;
  /// For `regularExpressionWithPattern` only.
  NSRegularExpression(const NSString& pattern, std::uint64_t options,
                      std::unique_ptr<Compiled> compiled);

 protected:
  ~NSRegularExpression() override;

 private:
  /// Calls `visit(matcher)` at each match until it answers false.
  template <class Visit>
  bool search(const NSString& string, std::uint64_t options, NSRange range, NSError* error,
              const Visit& visit) const;

  NSString pattern_;
  std::uint64_t options_;
  std::size_t groups_;
  std::unique_ptr<Compiled> compiled_;
};

}  // namespace zeb
