#pragma once

#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/StringKey.h>
#include <ZEBPlatform/Foundation/Value.h>

#include <compare>
#include <concepts>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace zeb {

class NSArray;
class NSMutableString;

/// Result of ordering two values.
enum NSComparisonResult : std::int64_t {
  NSOrderedAscending = -1,
  NSOrderedSame = 0,
  NSOrderedDescending = 1,
};

/// Immutable text: a sequence of UTF-16 code units, which need not be well-formed (an unpaired
/// surrogate is kept). All lengths, indexes and ranges count code units.
///
/// Text whose units are all below 128 is stored as bytes, all other text as 16-bit units;
/// `asciiView` and `utf16View` give the stored form without copying. A mutable text that has held
/// other units may store ASCII in 16-bit units; its `copy()` never does.
class NSString : public Value {
 public:
  constexpr NSString() noexcept = default;
  constexpr NSString(std::nullptr_t) noexcept {}
  NSString(const char* utf8) : Value(utf8) {}
  NSString(std::string_view utf8) : Value(utf8) {}
  NSString(const std::string& utf8) : Value(std::string_view(utf8)) {}
  NSString(std::u16string_view units);
  /// The value when it is a string, else nil.
  template <detail::ValueBeside<NSString> Source>
  explicit NSString(const Source& value) noexcept : Value(value.isString() ? value : Value()) {}
  /// The same, without counting the reference of a temporary value up and down.
  template <std::same_as<Value> Source>
  explicit NSString(Source&& value) noexcept
      : Value(value.isString() ? std::move(value) : Value()) {}

  /// Strict decoding: nil when `bytes` is not well-formed UTF-8.
  static NSString stringWithUTF8(std::string_view bytes);

  std::size_t length() const noexcept { return isNil() ? 0 : text().length; }
  /// True of a nil string, too.
  [[nodiscard]] bool empty() const noexcept { return length() == 0; }
  /// Throws NSRangeException past the end; on nil answers 0.
  char16_t characterAtIndex(std::size_t index) const;

  /// A UTF-8 copy. Unpaired surrogates are written in their three-byte form, which `NSString(…)`
  /// turns back into them, so that nothing is lost.
  std::string utf8() const;
  explicit operator std::string() const { return utf8(); }
  std::u16string utf16() const;

  /// The stored bytes, valid as long as this string and not zero-terminated; empty if the text is
  /// not stored as ASCII.
  std::string_view asciiView() const noexcept {
    return isNil() || text().isWide() ? std::string_view()
                                      : std::string_view(text().ascii(), text().length);
  }
  /// The stored code units, valid as long as this string; empty if the text is stored as ASCII.
  std::u16string_view utf16View() const noexcept {
    return isNil() || !text().isWide() ? std::u16string_view()
                                       : std::u16string_view(text().units(), text().length);
  }
  bool isASCII() const noexcept { return !isNil() && !text().isWide(); }
  /// Whether every surrogate is paired, so that a strict UTF-8 form exists.
  bool isWellFormed() const noexcept;

  bool isEqualToString(const NSString& other) const noexcept { return isEqual(other); }
  /// Compares code units, without regard to language. Nil sorts before everything.
  NSComparisonResult compare(const NSString& other) const noexcept;

  bool hasPrefix(const NSString& prefix) const noexcept;
  bool hasSuffix(const NSString& suffix) const noexcept;
  bool containsString(const NSString& part) const noexcept;
  /// The first occurrence of `part`; {NSNotFound, 0} if there is none or either text is nil or
  /// empty.
  NSRange rangeOfString(const NSString& part) const noexcept;

  /// Throws NSRangeException when the range reaches past the end; nil on nil.
  [[nodiscard]] NSString substringWithRange(NSRange range) const;
  [[nodiscard]] NSString substringFromIndex(std::size_t index) const;
  [[nodiscard]] NSString substringToIndex(std::size_t index) const;
  [[nodiscard]] NSString stringByAppendingString(const NSString& other) const;
  /// Concatenation, in which nil counts as empty. Either side may be any kind of text.
  [[nodiscard]] friend NSString operator+(const NSString& left, const NSString& right) {
    return (left.isNil() ? NSString("") : left).stringByAppendingString(right);
  }
  /// The pieces between the separators; the whole text if it contains no separator.
  [[nodiscard]] NSArray componentsSeparatedByString(const NSString& separator) const;

  /// Formatted text; see Foundation/Format.h for the directives.
  template <class... Arguments>
  static NSString stringWithFormat(std::string_view format, const Arguments&... arguments);

  [[nodiscard]] NSString copy() const { return NSString(Value::copy()); }
  [[nodiscard]] NSString detachedCopy() const { return NSString(Value::detachedCopy()); }
  [[nodiscard]] NSMutableString mutableCopy() const;

  friend std::strong_ordering operator<=>(const NSString& left, const NSString& right) noexcept {
    return static_cast<std::int64_t>(left.compare(right)) <=> 0;
  }
  friend bool operator==(const NSString& left, const NSString& right) noexcept {
    return static_cast<const Value&>(left) == static_cast<const Value&>(right);
  }

  const detail::StringStorage& text() const noexcept { return *storageAs<detail::StringStorage>(); }

 protected:
  explicit NSString(detail::Storage* adopted) noexcept : Value(adoptStorage, adopted) {}
};

/// Text that changes in place. Handles share one text, which belongs to one thread at a time.
class NSMutableString : public NSString {
 public:
  /// An empty text.
  NSMutableString();
  constexpr NSMutableString(std::nullptr_t) noexcept : NSString(nullptr) {}
  /// A new text with the content of `string`; nil makes an empty one.
  explicit NSMutableString(const NSString& string);
  /// The shared mutable text itself when the value is one, else nil.
  static NSMutableString from(const Value& value) noexcept;

  /// Nil appends nothing.
  NSMutableString& appendString(const NSString& string);
  NSMutableString& operator+=(const NSString& string) { return appendString(string); }
  NSMutableString& appendUTF8(std::string_view utf8);
  template <class... Arguments>
  NSMutableString& appendFormat(std::string_view format, const Arguments&... arguments);
  void setString(const NSString& string);
  /// Throws NSRangeException when the range reaches past the end.
  void replaceCharactersInRange(NSRange range, const NSString& replacement);
  void deleteCharactersInRange(NSRange range) { replaceCharactersInRange(range, NSString()); }

 private:
  detail::MutableStringStorage& contents() const noexcept {
    return *storageAs<detail::MutableStringStorage>();
  }
};

inline StringKey::StringKey(const detail::StringStorage& text) noexcept : source_(&text) {
  if (!text.isWide()) {
    utf8_ = text.ascii();
    length_ = text.length;
  }
  hash_ = detail::hashOfString(text);
}

inline StringKey StringKey::textOf(const Value& value) noexcept {
  return value.isString() ? StringKey(*value.storageAs<detail::StringStorage>()) : StringKey();
}

inline StringKey::StringKey(const NSString& string) noexcept : StringKey(textOf(string)) {}

inline bool StringKey::matches(const detail::StringStorage& candidate) const noexcept {
  if (&candidate == source_) return true;
  if (candidate.isWide() || !utf8_) return matchesWide(candidate);
  return candidate.length == length_ && detail::equalBytes(candidate.ascii(), utf8_, length_);
}

inline namespace literals {

/// `"text"_ns`: a string from a literal.
inline NSString operator""_ns(const char* utf8, std::size_t length) {
  return NSString(std::string_view(utf8, length));
}

}  // namespace literals

}  // namespace zeb
#include <ZEBPlatform/Foundation/Format.h>
