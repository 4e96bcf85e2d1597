#pragma once

#include <ZEBPlatform/RunLoop/LoopInboxPrivate.h>
#include <ZEBPlatform/RunLoop/LoopWaiterPrivate.h>
#include <ZEBPlatform/RunLoop/PendingBlocksPrivate.h>
#include <ZEBPlatform/RunLoop/RunLoopModesPrivate.h>

#include <atomic>
#include <cstdint>
#include <mutex>
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
  /// False when the loop has ended and the item stays the caller's.
  bool post(WorkItem& item) noexcept;
  void lookAround() noexcept;
  void mainQueueIsReady() noexcept;
  void stop() noexcept;
  /// An application's own loop, which does the waiting, has to tell it that it waits.
  void observerWasAdded() noexcept;
  /// Whether the loop can wait for the descriptor, for which it needs some of its own.
  bool canWatch(int descriptor) noexcept;
  /// Brings what is watched up to date for one descriptor.
  void watch(int descriptor);

  /// Makes the calling thread the loop's own.
  void adopt() noexcept;
  /// Releases all blocks and invalidates all items, those that come later too.
  void close() noexcept;

  // The loop's own thread; elsewhere the process stops:
  bool run(const NSString& modeName, std::uint64_t limit, bool endsAfterInput);
  /// Fires the mode's due timers; answers what is left to do.
  RunLoopModes::Outlook fireTimers(const NSString& modeName);
  /// The innermost run's, or nil.
  NSString currentMode();
  void makeCommon(const NSString& modeName);
  void dropBlocks(const void* target);
  int pollableDescriptor();
  void runPending();

 private:
  class FrameScope;

  void requireOwnThread() noexcept;

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
  bool hasWork(RunFrame& frame, const RunLoopModes::Outlook& outlook) noexcept;
  bool canGetWork(RunFrame& frame, const RunLoopModes::Outlook& outlook) const noexcept;
  void wait(RunFrame& frame, std::uint64_t limit);
  void lingerForNews() const noexcept;
  void leaveWaitingToHost();

  const bool isMain_;
  std::atomic<const void*> ownThread_{nullptr};
  LoopInbox inbox_;
  RunLoopModes modes_;
  std::atomic<bool> isMainQueueReady_{false};

  LoopWaiter waiter_;

  // The loop's own thread only, but for what is said:
  PendingBlocks pending_;
  RunFrame* frame_ = nullptr;  ///< changed under the lock
  std::mutex frameMutex_;      ///< for those who stop a run
  std::uint64_t runs_ = 0;     ///< that have begun
  /// Those whose blocks are being called.
  std::vector<RunLoopDescriptorSource*> calledSources_;
  bool didRunBlocks_ = false;          ///< since the last wait
  std::atomic<bool> isHosted_{false};  ///< an application's own loop may do the waiting
  bool isHostWaiting_ = false;         ///< observers were told so
};

}  // namespace zeb::detail
