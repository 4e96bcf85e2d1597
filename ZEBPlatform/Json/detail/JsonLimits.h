#pragma once

#include <ZEBPlatform/Foundation/detail/StaticText.h>

#include <cstddef>

namespace zeb::detail {

/// Arrays and dictionaries may be nested this deep in a JSON document. Reading and writing share
/// the limit, so that everything that is written can be read back.
inline constexpr std::size_t maxJsonNesting = 512;

/// What readers and writers report beyond the limit.
inline constexpr auto jsonNestingFault =
    numberedText<maxJsonNesting>("Nested more than ", " levels deep");

}  // namespace zeb::detail
