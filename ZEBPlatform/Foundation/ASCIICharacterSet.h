#pragma once

#include <cstdint>
#include <string_view>

namespace zeb {

/// A set of ASCII characters, fixed at compile time or built from others. Characters beyond ASCII
/// are never members.
///
/// The static functions give the characters that a part of a URL may contain without being
/// percent-encoded (RFC 3986). "%" is in none of them.
class ASCIICharacterSet {
 public:
  constexpr ASCIICharacterSet() noexcept = default;
  /// The characters of the text; those beyond ASCII are left out.
  explicit constexpr ASCIICharacterSet(std::string_view characters) noexcept {
    for (const char character : characters) {
      const auto code = static_cast<unsigned char>(character);
      if (code < 128) words_[code / 64] |= std::uint64_t{1} << code % 64;
    }
  }

  /// Takes a byte or a code unit.
  constexpr bool contains(char32_t character) const noexcept {
    return character < 128 && (words_[character / 64] >> character % 64 & 1) != 0;
  }

  /// The characters of either set.
  friend constexpr ASCIICharacterSet operator|(ASCIICharacterSet left,
                                               const ASCIICharacterSet& right) noexcept {
    for (int word = 0; word < 2; ++word) left.words_[word] |= right.words_[word];
    return left;
  }
  /// The characters of the left set that are not in the right one.
  friend constexpr ASCIICharacterSet operator-(ASCIICharacterSet left,
                                               const ASCIICharacterSet& right) noexcept {
    for (int word = 0; word < 2; ++word) left.words_[word] &= ~right.words_[word];
    return left;
  }
  friend constexpr bool operator==(const ASCIICharacterSet&,
                                   const ASCIICharacterSet&) noexcept = default;

  /// Section 3.2.1, without ":", which ends the user.
  static constexpr ASCIICharacterSet URLUserAllowedCharacterSet() noexcept {
    return URLHostAllowedCharacterSet();
  }
  /// Section 3.2.1.
  static constexpr ASCIICharacterSet URLPasswordAllowedCharacterSet() noexcept {
    return URLUserAllowedCharacterSet() | ASCIICharacterSet(":");
  }
  /// Section 3.2.2: a registered name, so without the brackets and colons of IP literals.
  static constexpr ASCIICharacterSet URLHostAllowedCharacterSet() noexcept {
    return ASCIICharacterSet("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~") |
           ASCIICharacterSet("!$&'()*+,;=");
  }
  /// Section 3.3, with "/".
  static constexpr ASCIICharacterSet URLPathAllowedCharacterSet() noexcept {
    return URLHostAllowedCharacterSet() | ASCIICharacterSet(":@/");
  }
  /// Section 3.4.
  static constexpr ASCIICharacterSet URLQueryAllowedCharacterSet() noexcept {
    return URLPathAllowedCharacterSet() | ASCIICharacterSet("?");
  }
  /// Section 3.5.
  static constexpr ASCIICharacterSet URLFragmentAllowedCharacterSet() noexcept {
    return URLQueryAllowedCharacterSet();
  }

 private:
  std::uint64_t words_[2] = {0, 0};
};

}  // namespace zeb
