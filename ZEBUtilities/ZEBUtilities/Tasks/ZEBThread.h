#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/RunLoop/NSThread.h>

namespace zeb {

/// Posted on the default notification centre, on the main queue, after a `ZEBThread` has been left. Its object
/// is the thread's name (nil if it has none), deliberately not the `ZEBThread`.
extern const char* const ZEBThreadWillExitNotification;

/// One long-lived thread with its own run loop, which runs the blocks that it is given one at a time and in
/// order: for work that needs a run loop off the main thread, such as run-loop timers and descriptors. Other
/// background work is better off on a queue.
///
/// Made with `makeRef<ZEBThread>()`, which starts it. It keeps itself alive until it is cancelled, whoever
/// else refers to it. All functions may be called from any thread.
class ZEBThread : public NSObject {
 public:
  ZEBThread();

  /// "ZEBThread", with everything here by its selectors; "init" and "new" are class methods there, and
  /// blocks travel as Runtime/BlockConversion.h says.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  /// Has the block called on the thread and waits for it; on the thread itself, calls it at once.
  void performBlockSync(Block<void()> block) { performBlock(std::move(block), true); }
  void performBlockAsync(Block<void()> block) { performBlock(std::move(block), false); }
  /// A cancelled thread calls no more blocks: those that come later are dropped, those that wait are skipped,
  /// and who waits for one goes on. Nil: nothing.
  void performBlock(Block<void()> block, bool synchronous);

  bool isCurrentThread() const;

  /// Ends the thread after the block that it runs, within about a second.
  void cancel() noexcept { thread_->cancel(); }
  bool isCancelled() const noexcept { return thread_->isCancelled(); }

  NSString name() const { return thread_->name(); }
  void setName(const NSString& name) { thread_->setName(name); }

 private:
  void runLoop();

  const Ref<NSThread> thread_;
  const Ref<NSObject> observer_;  ///< of the thread's exit
};

}  // namespace zeb
