#include <ZEBUtilities/Callbacks/CallbackTablePrivate.h>

#include <iterator>
#include <utility>

namespace zeb::detail {

struct CallbackTable::Entry final : ObserverEntry {
  explicit Entry(const WeakRef<NSObject>& itsObserver) : observer(itsObserver) {}
  bool isDead() const noexcept { return !observer.isAlive(); }

  const WeakRef<NSObject> observer;
  std::vector<ZEBCallbackDispatcher::CallbackBlock> blocks;
};

struct CallbackTable::Garbage final : NSObject {
  std::vector<ZEBCallbackDispatcher::CallbackBlock> blocks;
  List list;
};

void CallbackTable::remove(Entry& entry, Ref<Garbage>& garbage) {
  if (!garbage) garbage = makeRef<Garbage>();
  std::ranges::move(entry.blocks, std::back_inserter(garbage->blocks));
  entry.blocks.clear();
  index_.remove(entry);
  (void)entries_.remove(entry);  // without blocks, entries own nothing of a user
  if (List list = list_.clear()) garbage->list = std::move(list);
}

void CallbackTable::removeDead(Ref<Garbage>& garbage) {
  for (Entry* dead : index_.deadEntries()) remove(*dead, garbage);
}

Ref<NSObject> CallbackTable::add(const void* owner, const WeakRef<NSObject>& observer,
                                 ZEBCallbackDispatcher::CallbackBlock block) {
  Ref<Garbage> garbage;
  const LockGuard guard(lock_);
  if (isClosed_ || !observer.isAlive()) {
    garbage = makeRef<Garbage>();
    garbage->blocks.push_back(std::move(block));
    return garbage;
  }
  Entry* entry = index_.newestOf(owner);
  if (!entry) {
    if (index_.isRemovalDue()) removeDead(garbage);
    auto added = makeRef<Entry>(observer);
    entry = added.get();
    index_.reserve(owner);
    (void)entries_.add(std::move(added));
    index_.add(owner, *entry);
  }
  entry->blocks.push_back(std::move(block));
  (void)list_.clear();  // its blocks are in the entries too, so no block dies here
  return garbage;
}

Ref<NSObject> CallbackTable::remove(const void* owner) {
  Ref<Garbage> garbage;
  const LockGuard guard(lock_);
  if (Entry* entry = index_.newestOf(owner)) remove(*entry, garbage);
  return garbage;
}

Ref<NSObject> CallbackTable::removeDead() {
  Ref<Garbage> garbage;
  const LockGuard guard(lock_);
  removeDead(garbage);
  return garbage;
}

CallbackTable::List CallbackTable::list() {
  if (List list = list_.pin()) return list;
  const LockGuard guard(lock_);
  if (List list = list_.pin()) return list;
  CallbackList callbacks;
  for (const Ref<Entry>& entry : entries_.snapshot()) {
    for (const auto& block : entry->blocks) callbacks.push_back({entry->observer, block});
  }
  (void)list_.replace(std::move(callbacks));
  return list_.pin();
}

void CallbackTable::close() {
  Ref<Garbage> garbage;
  const LockGuard guard(lock_);
  isClosed_ = true;
  for (const Ref<Entry>& entry : entries_.snapshot()) {
    if (!entry->isRemoved()) remove(*entry, garbage);
  }
}

}  // namespace zeb::detail
