#pragma once

#include <cstddef>
#include <cstdint>

namespace zeb {

/// The index that means "not found": the largest signed machine word.
inline constexpr std::size_t NSNotFound = PTRDIFF_MAX;

/// Part of a sequence.
struct NSRange {
  std::size_t location = 0;
  std::size_t length = 0;

  bool operator==(const NSRange&) const = default;
};

}  // namespace zeb
