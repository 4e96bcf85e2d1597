#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace zeb::detail {

/// Text that the compiler puts together, so that messages and names built from constants cost
/// nothing at run time. Store it as `static constexpr`. Ends with a zero that does not count.
template <std::size_t Length>
struct StaticText {
  char characters[Length + 1] = {};

  constexpr const char* c_str() const noexcept { return characters; }
  constexpr operator std::string_view() const noexcept { return {characters, Length}; }
};

/// String literals, or arrays that hold nothing but one, one after the other.
template <std::size_t... Sizes>
consteval auto joinedText(const char (&... parts)[Sizes]) noexcept {
  StaticText<(Sizes + ...) - sizeof...(Sizes)> text;
  char* end = text.characters;
  ((end = std::copy_n(parts, Sizes - 1, end)), ...);
  return text;
}

/// `before`, the number in decimal digits, `after`.
template <std::size_t number, std::size_t BeforeSize, std::size_t AfterSize>
consteval auto numberedText(const char (&before)[BeforeSize],
                            const char (&after)[AfterSize]) noexcept {
  constexpr std::size_t digitCount = [] {
    std::size_t count = 1;
    for (std::size_t rest = number / 10; rest != 0; rest /= 10) ++count;
    return count;
  }();
  char digits[digitCount + 1] = {};
  std::size_t rest = number;
  for (std::size_t place = digitCount; place > 0; rest /= 10) {
    digits[--place] = static_cast<char>('0' + rest % 10);
  }
  return joinedText(before, digits, after);
}

}  // namespace zeb::detail
