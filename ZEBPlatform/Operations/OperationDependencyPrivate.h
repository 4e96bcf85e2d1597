#pragma once

#include <ZEBPlatform/Operations/NSOperation.h>

#include <array>

namespace zeb {

/// That one operation waits for another one: an entry of what the waiting one depends on, and until the other
/// one has finished a link in the list of those that wait for it.
struct NSOperation::Dependency {
  Ref<NSOperation> operation;  ///< nil in an entry that is free
  NSOperation* dependent = nullptr;
  Dependency* nextDependent = nullptr;
  Dependency** link = nullptr;  ///< what points here in the operation's list; null when not in it
};

/// Entries come in blocks, because most operations depend on a few others.
struct NSOperation::Dependencies {
  std::array<Dependency, 4> entries;
  std::size_t used = 0;
  Dependencies* next = nullptr;

  Dependency* begin() noexcept { return entries.data(); }
  Dependency* end() noexcept { return entries.data() + used; }
  bool isFull() const noexcept { return used == entries.size(); }
};

}  // namespace zeb
