#pragma once

#include <ZEBPlatform/Json/detail/JsonLimits.h>

#include <cstddef>

/// How deep objects may lie in each other in archives. Encoding and decoding recurse through the
/// objects' own code, so that neither can do without a limit.
namespace zeb::detail {

/// Levels of JSON in one document. What is nested deeper could not be read back.
inline constexpr std::size_t maxArchiveNesting = maxJsonNesting;

/// Bytes of the thread's stack that an object's own code can count on. With less left, encoding and
/// decoding stop with an error.
inline constexpr std::size_t minRemainingStack = std::size_t{64} << 10;

}  // namespace zeb::detail
