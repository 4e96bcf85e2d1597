#pragma once

#include <cstddef>

namespace zeb::detail {

/// Memory for work items of the usual size. Most items are allocated by one thread and freed by another,
/// which is what general allocators are slowest at: the threads contend, and a long queue is scattered
/// over memory. Here a thread takes blocks one after the other from a page of its own, so a queue lies in
/// memory in order. Freeing a block just counts it, and a page whose blocks are all free is used again.
/// The price: an item that is kept for long keeps its page, 63 times its size. Free pages beyond 16 MiB
/// go back to the system in regions of 31 pages, each region when all of its pages are free.
class WorkItemMemory {
 public:
  static constexpr std::size_t blockSize = 64;

  static void* allocate();
  static void free(void* block) noexcept;
};

}  // namespace zeb::detail
