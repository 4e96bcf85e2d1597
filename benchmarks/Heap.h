#pragma once

#include <cstddef>
#include <functional>

namespace zeb::bench {

/// The number of bytes by which the work made the heap grow: the usable sizes of the blocks that it
/// allocated and did not free. The program must have one thread.
std::ptrdiff_t heapGrowth(const std::function<void()>& work);

}  // namespace zeb::bench
