#pragma once

#include <ZEBPlatform/Memory/Block.h>

#include <mutex>
#include <utility>

namespace zeb::detail {

/// A block that one thread may release while another one is about to call it.
template <class Signature>
class ItemBlock {
 public:
  explicit ItemBlock(Block<Signature> block) : block_(std::move(block)) {}

  /// Nil once it is released.
  Block<Signature> get() const {
    std::lock_guard guard(mutex_);
    return block_;
  }

  void release() {
    Block<Signature> released;  // dies without the lock
    std::lock_guard guard(mutex_);
    released = std::exchange(block_, nullptr);
  }

 private:
  mutable std::mutex mutex_;
  Block<Signature> block_;
};

}  // namespace zeb::detail
