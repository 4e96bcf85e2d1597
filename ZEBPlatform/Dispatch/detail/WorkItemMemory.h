#pragma once

#include <cstddef>

namespace zeb::detail {

/// Memory for work items of the usual size. Most items go through a queue to another thread, which is what
/// general allocators are slowest at: the threads get into each other's way, and a long queue is scattered
/// over memory. Here a thread takes blocks one after the other from a page of its own, so that a queue lies
/// in memory in order; freeing one just counts, and a page whose blocks are all free is used again. The price:
/// an item that is kept for long keeps its page, 63 times its size. Free pages beyond 16 MiB go back to the system in
/// regions of 31, each when all of its pages are free.
class WorkItemMemory {
 public:
  static constexpr std::size_t blockSize = 64;

  static void* allocate();
  static void free(void* block) noexcept;
};

}  // namespace zeb::detail
