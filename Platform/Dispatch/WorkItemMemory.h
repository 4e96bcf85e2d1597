#pragma once

#include <cstddef>

namespace zeb::detail {

/// Memory for work items of the usual size. Items are mostly freed by another thread than made them, which
/// is what general allocators are slowest at: here each thread keeps some, and hands them on by the batch.
class WorkItemMemory {
 public:
  static constexpr std::size_t blockSize = 64;

  static void* allocate();
  static void free(void* block) noexcept;
};

}  // namespace zeb::detail
