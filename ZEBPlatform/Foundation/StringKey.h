#pragma once

#include <ZEBPlatform/Foundation/detail/StringHash.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zeb {

class NSString;
class Value;

namespace detail {
struct StringStorage;
}

/// A text whose hash is known, borrowed for the duration of one call: the name of a property, of an
/// archive's field, or a dictionary's key (see `DictionaryKey`).
///
/// Converts from every kind of text. A literal is hashed at compile time, so that looking it up
/// makes no string; an `NSString` brings the hash that it keeps; other text is hashed on the spot.
/// C++ text is UTF-8; malformed UTF-8 equals no stored string. A nil string or null pointer makes a
/// nil key, which is never found.
class StringKey {
 public:
  template <std::size_t Size>
  consteval StringKey(const char (&literal)[Size]) noexcept
      : utf8_(literal),
        length_(static_cast<std::uint32_t>(lengthWithoutPadding(literal, Size))),
        hash_(detail::hashOfUTF8(literal, length_)) {}

  StringKey(const NSString& string) noexcept;

  StringKey(std::string_view utf8) noexcept
      : utf8_(utf8.data() ? utf8.data() : ""),
        length_(static_cast<std::uint32_t>(utf8.size())),
        hash_(detail::hashOfUTF8(utf8_, utf8.size())) {}
  StringKey(const std::string& utf8) noexcept : StringKey(std::string_view(utf8)) {}
  /// A template, so that literals prefer the constructor that runs at compile time.
  template <class Pointer>
    requires std::same_as<Pointer, const char*> || std::same_as<Pointer, char*>
  StringKey(Pointer utf8) noexcept {
    if (utf8) *this = StringKey(std::string_view(utf8));
  }
  /// The text in a buffer ends at the first zero, as that of a pointer does.
  template <std::size_t Size>
  StringKey(char (&buffer)[Size]) noexcept : StringKey(static_cast<const char*>(buffer)) {}

  bool isNil() const noexcept { return hash_ == 0; }
  /// 0 for a nil key and for no other.
  std::uint32_t hash() const noexcept { return hash_; }
  /// Under the process's secret key (see KeyedHash.h).
  std::uint64_t keyedHash() const noexcept;

  /// The text itself; empty when it came from a string of 16-bit units.
  std::string_view utf8() const noexcept {
    return utf8_ ? std::string_view(utf8_, length_) : std::string_view();
  }
  /// The same text as an owned string.
  NSString string() const;

  /// Whether a stored string is this text. The key must not be nil.
  inline bool matches(const detail::StringStorage& candidate) const noexcept;

 protected:
  /// A nil key.
  constexpr StringKey() noexcept = default;
  inline explicit StringKey(const detail::StringStorage& text) noexcept;
  /// The key of a string value; nil for a value of another kind.
  static inline StringKey textOf(const Value& value) noexcept;

  const char* utf8_ = nullptr;  ///< null for a string of 16-bit units and without a text
  /// The `StringStorage` of the `NSString` that the key came from; the `Value` of a `DictionaryKey`
  /// whose hash is 0; otherwise null.
  const void* source_ = nullptr;
  std::uint32_t length_ = 0;  ///< of `utf8_`, in bytes
  std::uint32_t hash_ = 0;

 private:
  const detail::StringStorage* storage() const noexcept {
    return static_cast<const detail::StringStorage*>(source_);
  }
  /// The length without the zeros that fill an array longer than its text.
  static consteval std::size_t lengthWithoutPadding(const char* text, std::size_t size) noexcept {
    while (size > 0 && text[size - 1] == 0) --size;
    return size;
  }
  [[gnu::cold]] bool matchesWide(const detail::StringStorage& candidate) const noexcept;
};

}  // namespace zeb
