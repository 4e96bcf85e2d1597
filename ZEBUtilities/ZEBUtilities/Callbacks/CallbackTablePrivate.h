#pragma once

#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/SnapshotPointer.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Memory/detail/ObserverIndex.h>
#include <ZEBUtilities/Callbacks/ZEBCallbackDispatcher.h>

#include <atomic>
#include <cstddef>
#include <vector>

namespace zeb::detail {

struct Callback {
  WeakRef<NSObject> observer;
  ZEBCallbackDispatcher::CallbackBlock block;
};

/// All blocks of a table at one time, in calling order.
using CallbackList = std::vector<Callback>;

/// A dispatcher's blocks by observer. It is used on the access queue: readers share it, changes
/// have it to themselves. The lock is for two readers that both make the missing list, and for a
/// dispatcher that is destroyed while changes wait. While no change waits, readers need neither
/// lock nor queue.
///
/// Blocks own objects of users, whose destructors may do anything, so no block may die on the
/// access queue: changes answer what must be released elsewhere, or nil.
class CallbackTable final : public NSObject {
 public:
  /// What readers share until the next change.
  using List = SnapshotPointer<CallbackList>::Pin;

  /// To be called when a change is asked for, and when it has been made. Any thread.
  void changeBegins() noexcept { pendingChanges_.fetch_add(1, std::memory_order_relaxed); }
  void changeEnded() noexcept { pendingChanges_.fetch_sub(1, std::memory_order_release); }

  /// `owner` identifies the observer as long as its weak reference exists.
  [[nodiscard]] Ref<NSObject> add(const void* owner, const WeakRef<NSObject>& observer,
                                  ZEBCallbackDispatcher::CallbackBlock block) ZEB_EXCLUDES(lock_);
  [[nodiscard]] Ref<NSObject> remove(const void* owner) ZEB_EXCLUDES(lock_);
  [[nodiscard]] Ref<NSObject> removeDead() ZEB_EXCLUDES(lock_);

  List list() ZEB_EXCLUDES(lock_);
  /// The list if there is one and no change waits, else empty. Any thread: a thread that asked for
  /// a change gets a list only after the change has been made.
  List listWithoutWaiting() noexcept {
    if (pendingChanges_.load(std::memory_order_acquire) != 0) return List();
    return list_.pin();
  }

  /// For the end of the dispatcher: drops everything at once; changes that come later drop their
  /// blocks.
  void close() ZEB_EXCLUDES(lock_);

 private:
  struct Garbage;
  struct Entry;

  void remove(Entry& entry, Ref<Garbage>& garbage) ZEB_REQUIRES(lock_);
  void removeDead(Ref<Garbage>& garbage) ZEB_REQUIRES(lock_);

  Lock lock_;
  bool isClosed_ ZEB_GUARDED_BY(lock_) = false;
  /// One entry for each observer, in the order in which the observers came.
  ObserverList<Entry> entries_ ZEB_GUARDED_BY(lock_);
  ObserverIndex<Entry> index_ ZEB_GUARDED_BY(lock_);
  /// Made by a reader from the entries, removed by changes.
  SnapshotPointer<CallbackList> list_;
  std::atomic<std::size_t> pendingChanges_{0};
};

}  // namespace zeb::detail
