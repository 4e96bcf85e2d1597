#pragma once

#include <Memory/NSObject.h>
#include <Memory/WeakRef.h>
#include <ZEBUtilities/ZEBCallbackDispatcher.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <map>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace zeb::detail {

/// All blocks of a table at one time, in calling order.
struct CallbackList final : NSObject {
  struct Callback {
    bool isAlive() const noexcept { return observer.isAlive(); }
    WeakRef<NSObject> observer;
    ZEBCallbackDispatcher::CallbackBlock block;
  };
  std::vector<Callback> callbacks;
};

/// A dispatcher's blocks by observer. Used on the access queue, by readers together and by changes alone; the
/// lock is there for the readers' first meeting, and for a dispatcher that is destroyed while changes wait.
///
/// Blocks own things of users, whose destructors may do anything, so that none may die on the access queue:
/// changes answer what has to be released elsewhere, or nil.
class CallbackTable final : public NSObject {
 public:
  [[nodiscard]] Ref<NSObject> add(const NSObject* address, const WeakRef<NSObject>& observer,
                                  ZEBCallbackDispatcher::CallbackBlock block);
  [[nodiscard]] Ref<NSObject> remove(const NSObject* address);
  [[nodiscard]] Ref<NSObject> removeDead();

  /// What readers share until the next change.
  Ref<CallbackList> list();

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
  Ref<CallbackList> list_;
  std::atomic<CallbackList*> sharedList_{nullptr};  ///< `list_`, for those who can wait for no lock
};

}  // namespace zeb::detail
