#pragma once

#include <string>
#include <string_view>

namespace zeb {

/// A text parameter, UTF-8, that takes a null pointer as the empty text. Borrowed during the call.
class NullableText : public std::string_view {
 public:
  constexpr NullableText() noexcept = default;
  constexpr NullableText(const char* utf8) noexcept : std::string_view(utf8 ? utf8 : "") {}
  constexpr NullableText(std::string_view utf8) noexcept : std::string_view(utf8) {}
  constexpr NullableText(const std::string& utf8) noexcept : std::string_view(utf8) {}
};

}  // namespace zeb
