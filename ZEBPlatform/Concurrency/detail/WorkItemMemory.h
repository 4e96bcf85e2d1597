#pragma once

#include <cstddef>

namespace zeb::detail {

/// Memory for work items of up to 64 bytes. Most items are allocated by one thread and freed by
/// another one, which is the slowest case of general allocators: the threads contend, and a long
/// queue is scattered over memory. Here each thread takes blocks one after the other from a page of
/// its own, so a queue lies in memory in its order. Freeing a block only counts it, and a page
/// whose blocks are all free is used again.
///
/// Memory ordering: what a thread did with a block before free() is visible to the thread that gets
/// the memory again. Any thread may free any block, also while thread-local objects are destroyed.
/// Cost: a few instructions without an atomic operation for most calls; one atomic operation when a
/// thread frees a block of another page than before, and one lock for each page of 63 blocks.
/// Do not use it for objects that live long: one block in use keeps its whole page of 4 KiB. Free
/// pages beyond 16 MiB return to the system in regions of 31 pages, each when all of its pages are
/// free.
class WorkItemMemory {
 public:
  static constexpr std::size_t blockSize = 64;

  /// A block of `blockSize` bytes, aligned for its size. Throws `std::bad_alloc` without memory.
  [[nodiscard]] static void* allocate();
  static void free(void* block) noexcept;
};

}  // namespace zeb::detail
