#pragma once

#include <cstddef>
#include <functional>

namespace zeb::bench {

/// By how many bytes the work made the heap grow: what it allocated and did not free, as usable sizes
/// of blocks. The program has one thread.
std::ptrdiff_t heapGrowth(const std::function<void()>& work);

}  // namespace zeb::bench
