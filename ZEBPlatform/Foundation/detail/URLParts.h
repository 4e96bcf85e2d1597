#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace zeb::detail {

/// The place of one part in the text of a URL, without its delimiters. A part may be there and be
/// empty: "a?" has an empty query, "a" has none.
struct URLPart {
  std::uint32_t start = 1;
  std::uint32_t end = 0;

  bool exists() const noexcept { return start <= end; }
  /// Empty if the part does not exist, too.
  std::string_view in(std::string_view text) const noexcept {
    return exists() ? text.substr(start, end - start) : std::string_view();
  }
};

/// The parts of a URL, absolute or relative (RFC 3986). The host exists if "//" introduces an
/// authority; the host of an IP literal includes its brackets. User and password exist if the
/// authority contains "@" and, before it, ":". The path always exists.
struct URLParts {
  URLPart scheme, user, password, host, port, path, query, fragment;
};

/// The parts of a text that is shorter than 4 GiB, or none if it is not a URL in the strict sense
/// of RFC 3986. Takes linear time and no memory.
std::optional<URLParts> parsedURL(std::string_view text) noexcept;

/// Whether the text is an IP address in brackets (RFC 3986, section 3.2.2).
bool isIPLiteral(std::string_view text) noexcept;

/// The number that the digits are; nothing for other text, and beyond 65535.
std::optional<std::uint16_t> portNumber(std::string_view text) noexcept;

/// Whether the text can be a scheme (RFC 3986, section 3.1).
bool isURLScheme(std::string_view text) noexcept;

}  // namespace zeb::detail
