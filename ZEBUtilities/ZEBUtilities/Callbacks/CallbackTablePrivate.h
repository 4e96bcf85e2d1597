#pragma once

#include <ZEBPlatform/Concurrency/detail/SnapshotPointer.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBUtilities/Callbacks/ZEBCallbackDispatcher.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace zeb::detail {

struct Callback {
  WeakRef<NSObject> observer;
  ZEBCallbackDispatcher::CallbackBlock block;
};

/// All blocks of a table at one time, in calling order.
using CallbackList = std::vector<Callback>;

/// A dispatcher's blocks by observer. Used on the access queue, by readers together and by changes alone; the
/// lock is there for the readers' first meeting, and for a dispatcher that is destroyed while changes wait.
/// While no change waits, readers need neither.
///
/// Blocks own things of users, whose destructors may do anything, so that none may die on the access queue:
/// changes answer what has to be released elsewhere, or nil.
class CallbackTable final : public NSObject {
 public:
  /// What readers share until the next change.
  using List = SnapshotPointer<CallbackList>::Pin;

  /// Around each change, from the call that asks for it to its end. Any thread.
  void changeBegins() noexcept { pendingChanges_.fetch_add(1, std::memory_order_relaxed); }
  void changeEnded() noexcept { pendingChanges_.fetch_sub(1, std::memory_order_release); }

  [[nodiscard]] Ref<NSObject> add(const NSObject* address, const WeakRef<NSObject>& observer,
                                  ZEBCallbackDispatcher::CallbackBlock block);
  [[nodiscard]] Ref<NSObject> remove(const NSObject* address);
  [[nodiscard]] Ref<NSObject> removeDead();

  List list();
  /// The list if it is there and no change waits, else empty. Any thread: whoever asked for a change before gets
  /// a list only when that has been made.
  List listWithoutWaiting() noexcept {
    if (pendingChanges_.load(std::memory_order_acquire) != 0) return List();
    return list_.pin();
  }

  /// The dispatcher is gone: drops everything, here and now; changes that come later drop theirs.
  void close();

 private:
  struct Entry {
    const NSObject* address;
    WeakRef<NSObject> observer;
    std::vector<ZEBCallbackDispatcher::CallbackBlock> blocks;
  };
  using Entries = std::map<std::uint64_t, Entry>;
  struct Garbage;

  // Under the lock.
  void moveOut(Entries::iterator entry, Ref<Garbage>& garbage);
  void moveOutDead(Ref<Garbage>& garbage);

  std::mutex mutex_;
  bool isClosed_ = false;
  Entries entries_;  ///< by age
  std::unordered_map<const NSObject*, Entries::iterator> entryOf_;
  std::uint64_t nextAge_ = 0;
  std::size_t sizeToCheck_ = 16;  ///< when there are so many entries, dead observers are looked for
  SnapshotPointer<CallbackList> list_;  ///< made by a reader, taken away by changes
  std::atomic<std::size_t> pendingChanges_{0};
};

}  // namespace zeb::detail
