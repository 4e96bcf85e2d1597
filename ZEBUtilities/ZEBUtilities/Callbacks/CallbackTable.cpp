#include <ZEBUtilities/Callbacks/CallbackTablePrivate.h>

#include <utility>

namespace zeb::detail {

struct CallbackTable::Garbage final : NSObject {
  std::vector<Entry> entries;
  List list;
};

void CallbackTable::moveOut(Entries::iterator entry, Ref<Garbage>& garbage) {
  if (!garbage) garbage = makeRef<Garbage>();
  entryOf_.erase(entry->second.address);
  garbage->entries.push_back(std::move(entry->second));
  entries_.erase(entry);
  if (List list = list_.clear()) garbage->list = std::move(list);
}

void CallbackTable::moveOutDead(Ref<Garbage>& garbage) {
  for (auto entry = entries_.begin(); entry != entries_.end();) {
    const auto candidate = entry++;
    if (!candidate->second.observer.isAlive()) moveOut(candidate, garbage);
  }
}

Ref<NSObject> CallbackTable::add(const NSObject* address, const WeakRef<NSObject>& observer,
                                 ZEBCallbackDispatcher::CallbackBlock block) {
  Ref<Garbage> garbage;
  std::lock_guard guard(mutex_);
  if (isClosed_ || !observer.isAlive()) {
    garbage = makeRef<Garbage>();
    garbage->entries.push_back({address, observer, {std::move(block)}});
    return garbage;
  }
  auto found = entryOf_.find(address);
  // Another observer, long dead, may have had this one's address.
  if (found != entryOf_.end() && !found->second->second.observer.isAlive()) {
    moveOut(found->second, garbage);
    found = entryOf_.end();
  }
  if (found == entryOf_.end()) {
    if (entries_.size() >= sizeToCheck_) {
      moveOutDead(garbage);
      sizeToCheck_ = 2 * entries_.size() + 16;
    }
    const auto entry = entries_.emplace(nextAge_++, Entry{address, observer, {}}).first;
    found = entryOf_.emplace(address, entry).first;
  }
  found->second->second.blocks.push_back(std::move(block));
  (void)list_.clear();  // its blocks are in the entries, so that none dies here
  return garbage;
}

Ref<NSObject> CallbackTable::remove(const NSObject* address) {
  Ref<Garbage> garbage;
  std::lock_guard guard(mutex_);
  const auto found = entryOf_.find(address);
  if (found == entryOf_.end()) return nullptr;
  moveOut(found->second, garbage);
  return garbage;
}

Ref<NSObject> CallbackTable::removeDead() {
  Ref<Garbage> garbage;
  std::lock_guard guard(mutex_);
  moveOutDead(garbage);
  return garbage;
}

CallbackTable::List CallbackTable::list() {
  if (List list = list_.pin()) return list;
  std::lock_guard guard(mutex_);
  if (List list = list_.pin()) return list;
  CallbackList callbacks;
  for (const auto& [age, entry] : entries_) {
    for (const auto& block : entry.blocks) callbacks.push_back({entry.observer, block});
  }
  (void)list_.replace(std::move(callbacks));
  return list_.pin();
}

void CallbackTable::close() {
  Entries entries;
  List list;
  std::lock_guard guard(mutex_);
  isClosed_ = true;
  entries.swap(entries_);
  entryOf_.clear();
  list = list_.clear();
}

}  // namespace zeb::detail
