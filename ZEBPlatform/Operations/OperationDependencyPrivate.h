#pragma once

#include <ZEBPlatform/Operations/NSOperation.h>

#include <array>

namespace zeb {

/// A dependency edge: stored in the waiter, linked into the awaited operation until it finishes.
struct NSOperation::Dependency {
  Ref<NSOperation> operation;  ///< the awaited one; nil in an unused entry
  NSOperation* dependent = nullptr;
  Dependency* nextDependent = nullptr;
  Dependency** link = nullptr;  ///< the pointer to this edge in the list; null when not linked
};

/// Edges are stored in blocks, because most operations depend on a few others.
struct NSOperation::Dependencies {
  std::array<Dependency, 4> entries;
  std::size_t used = 0;
  Dependencies* next = nullptr;

  Dependency* begin() noexcept { return entries.data(); }
  Dependency* end() noexcept { return entries.data() + used; }
  bool isFull() const noexcept { return used == entries.size(); }
};

/// What is left to do for an operation that has just finished.
struct NSOperation::Ending {
  NSOperation* readyOperations = nullptr;  ///< were waiting for this operation last
  Block<void()> completionBlock;
};

}  // namespace zeb
