#pragma once

#include <ZEBPlatform/RunLoop/LoopInboxPrivate.h>
#include <ZEBPlatform/RunLoop/LoopWaiterPrivate.h>
#include <ZEBPlatform/RunLoop/PendingBlocksPrivate.h>
#include <ZEBPlatform/RunLoop/RunLoopModesPrivate.h>

#include <atomic>
#include <cstdint>
#include <vector>

namespace zeb::detail {

/// The working part of a run loop.
class RunLoopCore {
 public:
  explicit RunLoopCore(bool isMain) noexcept : isMain_(isMain) {}
  RunLoopCore(const RunLoopCore&) = delete;
  RunLoopCore& operator=(const RunLoopCore&) = delete;
  ~RunLoopCore() { close(); }

  RunLoopModes& modes() noexcept { return modes_; }

  // Any thread:
  /// False when the loop has ended; the caller keeps the item.
  bool post(WorkItem& item) noexcept;
  /// Makes the loop do one more pass before its thread sleeps.
  void requestPass() noexcept;
  void mainQueueIsReady() noexcept;
  void stop() noexcept;
  /// Tells a hosted loop to call the new observer when the application's loop waits.
  void observerWasAdded() noexcept;
  /// Whether the loop can wait for the descriptor. Reserves the descriptors that it needs itself.
  bool canWatch(int descriptor) noexcept;
  /// Brings what is watched up to date for one descriptor.
  void watch(int descriptor);
  /// Removes the item from all modes, or from one.
  void remove(RunLoopItem& item);
  void remove(RunLoopItem& item, const NSString& modeName);

  /// Makes the calling thread the loop's own.
  void adopt() noexcept;
  /// Releases all blocks and invalidates all items, also those that are added later.
  void close() noexcept;

  // The loop's own thread; elsewhere the process stops:
  bool run(const NSString& modeName, std::uint64_t limit, bool endsAfterInput);
  /// Fires the mode's due timers and returns what is left to do.
  RunLoopModes::Outlook fireTimers(const NSString& modeName);
  /// The mode of the innermost run, or nil.
  NSString currentMode();
  void makeCommon(const NSString& modeName);
  void dropBlocks(const void* target);
  int pollableDescriptor();
  void runPending();

 private:
  using Kind = RunLoopItem::Kind;
  class RunFrame;

  void requireOwnThread() noexcept;
  void unwatchIfDescriptor(const RunLoopItem& item);

  bool runFrame(RunLoopMode& mode, std::uint64_t limit, bool endsAfterInput);
  void beginRun();
  bool pass(RunFrame& frame);
  void fireDueTimers(RunFrame& frame);
  bool runBlocks(RunFrame& frame);
  bool runSources(RunFrame& frame);
  bool runMainQueue(RunFrame& frame);
  bool handleDescriptors(RunFrame& frame);
  bool call(RunLoopDescriptorSource& source, Readiness readiness);
  void notify(RunFrame& frame, RunLoopActivity activity);

  void takePosted() noexcept { pending_.append(inbox_.takeAll()); }
  bool hasWork(RunLoopMode& mode, const RunLoopModes::Outlook& outlook) noexcept;
  bool canGetWork(RunLoopMode& mode, const RunLoopModes::Outlook& outlook) const noexcept;
  void wait(RunFrame& frame, std::uint64_t limit);
  void spinForNews() const noexcept;
  void leaveWaitingToHost();

  const bool isMain_;
  std::atomic<const void*> ownThread_{nullptr};
  LoopInbox inbox_;
  RunLoopModes modes_;
  std::atomic<bool> isMainQueueReady_{false};

  LoopWaiter waiter_;

  Lock frameLock_;
  RunFrame* frame_ ZEB_GUARDED_BY(frameLock_) = nullptr;  ///< of the innermost run

  // For the loop's own thread, unless atomic:
  PendingBlocks pending_;
  std::uint64_t runs_ = 0;  ///< that have begun
  /// The sources whose blocks are being called.
  std::vector<RunLoopDescriptorSource*> calledSources_;
  bool didRunBlocks_ = false;          ///< since the last wait
  std::atomic<bool> isHosted_{false};  ///< an application's own loop may do the waiting
  bool isHostWaiting_ = false;         ///< observers were told so
};

}  // namespace zeb::detail
