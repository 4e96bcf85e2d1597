#pragma once

#include <ZEBPlatform/Foundation/detail/StringHash.h>

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zeb {

class NSString;

namespace detail {
struct StringStorage;
}

/// What dictionaries are asked with: a string whose hash is known, seen but not owned.
///
/// A literal converts by itself and is hashed at compile time, so `dictionary.find("name")` makes no
/// string; an `NSString` brings the hash that it keeps. A nil string is a key that is never found.
/// Lives only as long as the call it is passed to.
class StringKey {
 public:
  template <std::size_t Size>
  consteval StringKey(const char (&literal)[Size]) noexcept
      : utf8_(literal),
        length_(static_cast<std::uint32_t>(lengthWithoutPadding(literal, Size))),
        hash_(detail::hashOfUTF8(literal, length_)) {}

  StringKey(const NSString& string) noexcept;

  /// UTF-8 that is not a literal, hashed now.
  explicit StringKey(std::string_view utf8) noexcept
      : utf8_(utf8.data() ? utf8.data() : ""),
        length_(static_cast<std::uint32_t>(utf8.size())),
        hash_(detail::hashOfUTF8(utf8_, utf8.size())) {}

  bool isNil() const noexcept { return !utf8_ && !storage_; }
  std::uint32_t hash() const noexcept { return hash_; }
  /// Under the process's secret key (see KeyedHash.h).
  std::uint64_t keyedHash() const noexcept;

  /// The text itself; empty when it came from a string of 16-bit units.
  std::string_view utf8() const noexcept {
    return utf8_ ? std::string_view(utf8_, length_) : std::string_view();
  }
  /// The same text as an owned string.
  NSString string() const;

  /// Whether a stored string is this text.
  inline bool matches(const detail::StringStorage& candidate) const noexcept;

 private:
  /// Without the zeros that an array may be longer by than its text.
  static consteval std::size_t lengthWithoutPadding(const char* text, std::size_t size) noexcept {
    while (size > 0 && text[size - 1] == 0) --size;
    return size;
  }
  [[gnu::cold]] bool matchesWide(const detail::StringStorage& candidate) const noexcept;

  const char* utf8_ = nullptr;                      ///< null for a string of 16-bit units
  const detail::StringStorage* storage_ = nullptr;  ///< set when it came from an `NSString`
  std::uint32_t length_ = 0;                        ///< of `utf8_`, in bytes
  std::uint32_t hash_ = 0;
};

}  // namespace zeb
