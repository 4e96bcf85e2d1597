#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/RunLoop/NSThread.h>

namespace zeb {

/// Posted on the default notification centre, on the main queue, when a `ZEBThread` exits. Its
/// object is the thread's name (nil without one), deliberately not the `ZEBThread`.
extern const char* const ZEBThreadWillExitNotification;

/// A long-lived thread with its own run loop, which calls blocks one at a time and in order. Use it
/// for work that needs a run loop off the main thread, such as run-loop timers and descriptors. Use
/// a queue for other background work.
///
/// `makeRef<ZEBThread>()` starts the thread. The object keeps itself alive until it is cancelled.
/// All functions may be called from any thread.
class ZEBThread : public NSObject {
 public:
  ZEBThread();

  /// Registered as "ZEBThread", with all functions here under their selectors. "init" and "new" are
  /// class methods there, and blocks are passed as described in Runtime/BlockConversion.h.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  /// Calls the block on the thread and waits for it. On the thread itself, calls it at once.
  void performBlockSync(Block<void()> block) { performBlock(std::move(block), true); }
  void performBlockAsync(Block<void()> block) { performBlock(std::move(block), false); }
  /// A cancelled thread calls no more blocks: new ones are dropped, waiting ones are skipped, and
  /// callers that wait for a block continue. A nil block does nothing.
  void performBlock(Block<void()> block, bool synchronous);

  bool isCurrentThread() const;

  /// Ends the thread after its current block, within about a second.
  void cancel() noexcept { thread_->cancel(); }
  bool isCancelled() const noexcept { return thread_->isCancelled(); }

  NSString name() const { return thread_->name(); }
  void setName(const NSString& name) { thread_->setName(name); }

 private:
  void runLoop();

  const Ref<NSThread> thread_;
  const Ref<NSObject> observer_;  ///< observes the thread's exit
};

}  // namespace zeb
