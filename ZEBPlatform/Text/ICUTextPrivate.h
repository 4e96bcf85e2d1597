#pragma once

#include <unicode/utypes.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace zeb::detail {

/// Whether ICU can take that many code units.
inline bool fitsICU(std::size_t length) noexcept {
  return length <= static_cast<std::size_t>((std::numeric_limits<std::int32_t>::max)());
}

/// The text that `write(buffer, capacity, status)` writes. It answers the length that it needs and
/// is called again if the first buffer, as long as `expectedLength`, is too short. Nothing if it
/// fails.
template <class Write>
std::optional<std::u16string> icuText(std::size_t expectedLength, const Write& write) {
  std::u16string text(expectedLength, u'\0');
  for (;;) {
    if (!fitsICU(text.size())) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t length = write(text.data(), static_cast<std::int32_t>(text.size()), &status);
    const bool isTooShort = status == U_BUFFER_OVERFLOW_ERROR;
    if (length < 0 || (U_FAILURE(status) && !isTooShort)) return std::nullopt;
    text.resize(static_cast<std::size_t>(length));
    if (!isTooShort) return text;
  }
}

}  // namespace zeb::detail
