#pragma once

#include <cstddef>
#include <span>

namespace zeb::detail {

// Hexadecimal digits and the bytes that they mean, in blocks of 16 bytes. The functions whose names
// end in `ByByte` do the same, one byte at a time. The others use them for what is left after the
// last block, and the tests compare the two.

/// Writes two lowercase digits per byte.
void encodeHex(std::span<const std::byte> bytes, char* digits) noexcept;
void encodeHexByByte(std::span<const std::byte> bytes, char* digits) noexcept;

/// Fills `bytes` from twice as many characters. False if one of them is not a digit; the bytes are
/// then undefined.
[[nodiscard]] bool decodeHex(const char* digits, std::span<std::byte> bytes) noexcept;
[[nodiscard]] bool decodeHexByByte(const char* digits, std::span<std::byte> bytes) noexcept;

}  // namespace zeb::detail
