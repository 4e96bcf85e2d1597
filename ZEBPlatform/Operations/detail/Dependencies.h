#pragma once

#include <ZEBPlatform/Memory/Ref.h>

#include <array>
#include <cstddef>

namespace zeb {
class NSOperation;
}

namespace zeb::detail {

/// A dependency edge: stored in the waiter, linked into the awaited operation until it finishes.
struct Dependency {
  Ref<NSOperation> operation;  ///< the awaited one; nil in an unused entry
  NSOperation* dependent = nullptr;
  Dependency* nextDependent = nullptr;
  /// Set when a dependent has to be removed. Setting it earlier would cost an access to another
  /// operation's memory for each edge, although most edges are never removed one by one.
  Dependency* previousDependent = nullptr;
};

/// Edges are stored in blocks, because most operations depend on a few others. The first block is
/// part of the operation.
struct Dependencies {
  std::array<Dependency, 3> entries;
  std::size_t used = 0;
  Dependencies* next = nullptr;

  Dependency* begin() noexcept { return entries.data(); }
  Dependency* end() noexcept { return entries.data() + used; }
  const Dependency* begin() const noexcept { return entries.data(); }
  const Dependency* end() const noexcept { return entries.data() + used; }
  bool isFull() const noexcept { return used == entries.size(); }
};

}  // namespace zeb::detail
