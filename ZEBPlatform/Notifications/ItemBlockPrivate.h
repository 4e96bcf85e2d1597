#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Memory/Block.h>

#include <utility>

namespace zeb::detail {

/// A block that one thread may release while another thread is about to call it.
template <class Signature>
class ItemBlock {
 public:
  explicit ItemBlock(Block<Signature> block) : block_(std::move(block)) {}

  /// Nil once it is released.
  Block<Signature> get() const ZEB_EXCLUDES(lock_) {
    const LockGuard guard(lock_);
    return block_;
  }

  void release() ZEB_EXCLUDES(lock_) {
    Block<Signature> released;  // destroyed after the lock is free: that runs the user's code
    const LockGuard guard(lock_);
    std::swap(released, block_);
  }

 private:
  mutable Lock lock_;
  Block<Signature> block_ ZEB_GUARDED_BY(lock_);
};

}  // namespace zeb::detail
