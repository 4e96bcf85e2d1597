#pragma once

#include <ZEBPlatform/Memory/detail/ObserverList.h>

#include <cstddef>
#include <unordered_map>
#include <vector>

namespace zeb::detail {

/// Finds the entries of one or several observer lists by their owners, and knows when to look for
/// the dead: the one clean-up rule of all lists.
///
/// The rule: a removal of dead entries is due when as many entries have been added as the last
/// search left over, and 16 more. So the dead never outnumber the living by more than that, and
/// each addition pays for a constant number of looks. A user that meets a dead observer while it
/// calls the others may remove it at once.
///
/// An owner is the observer's address or another one that identifies it; it is never dereferenced.
/// The index does not own entries: the lists do. It has no lock: its owner guards it together with
/// the lists. All functions but `deadEntries()` take constant time on average.
template <class Entry>
class ObserverIndex {
 public:
  std::size_t size() const noexcept { return size_; }
  /// How many entries an owner has.
  std::size_t countOf(const void* owner) const {
    const auto owned = owned_.find(owner);
    return owned == owned_.end() ? 0 : owned->second.count;
  }
  /// The owner of an entry in the index.
  static const void* ownerOf(const Entry& entry) noexcept { return entry.owner_; }
  /// The newest entry of an owner, or null; and the next older one of the same owner.
  Entry* newestOf(const void* owner) const {
    const auto owned = owned_.find(owner);
    return owned == owned_.end() ? nullptr : static_cast<Entry*>(owned->second.newest);
  }
  static Entry* olderThan(const Entry& entry) noexcept { return static_cast<Entry*>(entry.older_); }

  /// Takes the memory for an entry of this owner, so that `add()` can't fail after the entry's list
  /// has taken it.
  void reserve(const void* owner) { (void)owned_[owner]; }
  void add(const void* owner, Entry& entry) noexcept {
    Owned& owned = owned_[owner];
    entry.owner_ = owner;
    entry.older_ = owned.newest;
    if (owned.newest) owned.newest->newer_ = &entry;
    owned.newest = &entry;
    ++owned.count;
    ++size_;
  }
  void remove(Entry& entry) noexcept {
    if (entry.older_) entry.older_->newer_ = entry.newer_;
    if (entry.newer_) entry.newer_->older_ = entry.older_;
    const auto owned = owned_.find(entry.owner_);
    if (!entry.newer_) owned->second.newest = entry.older_;
    if (--owned->second.count == 0) owned_.erase(owned);
    --size_;
  }

  bool isRemovalDue() const noexcept { return size_ >= sizeForRemoval_; }
  /// The entries whose `isDead()` holds. The caller must remove all of them, from here and from
  /// their lists.
  std::vector<Entry*> deadEntries() {
    std::vector<Entry*> dead;
    for (const auto& [owner, owned] : owned_) {
      for (auto* entry = static_cast<Entry*>(owned.newest); entry; entry = olderThan(*entry)) {
        if (entry->isDead()) dead.push_back(entry);
      }
    }
    sizeForRemoval_ = 2 * (size_ - dead.size()) + 16;
    return dead;
  }

 private:
  struct Owned {
    ObserverEntry* newest = nullptr;
    std::size_t count = 0;
  };

  std::unordered_map<const void*, Owned> owned_;
  std::size_t size_ = 0;
  std::size_t sizeForRemoval_ = 16;
};

}  // namespace zeb::detail
