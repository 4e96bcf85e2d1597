#include <ZEBPlatform/RunLoop/PendingBlocksPrivate.h>
#include <ZEBPlatform/RunLoop/PostedBlockPrivate.h>

#include <algorithm>
#include <utility>

namespace zeb::detail {

namespace {

// These items belong to one thread.
WorkItem* nextOf(const WorkItem& item) noexcept {
  return item.next.load(std::memory_order_relaxed);
}
void setNext(WorkItem& item, WorkItem* next) noexcept {
  item.next.store(next, std::memory_order_relaxed);
}

void dropList(WorkItem* item) noexcept {
  while (item) PostedBlock::drop(*std::exchange(item, nextOf(*item)));
}

}  // namespace

void PendingBlocks::append(const ItemList& newer) noexcept {
  if (newer.count == 0) return;
  if (items_.last) {
    setNext(*items_.last, newer.first);
  } else {
    items_.first = newer.first;
  }
  items_.last = newer.last;
  items_.count += newer.count;
}

PendingBlocks::Place PendingBlocks::find(const RunLoopMode& mode) {
  const auto skipped = std::ranges::find(skipped_, mode.name, &Skipped::modeName);
  WorkItem* const start = skipped != skipped_.end() ? skipped->last : nullptr;
  Place place{start, start ? nextOf(*start) : items_.first};
  while (place.item && !PostedBlock::allows(*place.item, mode)) {
    place = {place.item, nextOf(*place.item)};
  }
  if (skipped != skipped_.end()) {
    skipped->last = place.previous;
  } else if (place.previous) {
    if (skipped_.size() == maxSkipped) skipped_.clear();
    skipped_.push_back({mode.name, place.previous});
  }
  return place;
}

WorkItem* PendingBlocks::takeFirst(const RunLoopMode& mode) {
  const Place place = find(mode);
  if (place.item) unlink(place);
  return place.item;
}

void PendingBlocks::unlink(const Place& place) noexcept {
  WorkItem* const next = nextOf(*place.item);
  if (place.previous) {
    setNext(*place.previous, next);
  } else {
    items_.first = next;
  }
  if (!next) items_.last = place.previous;
  --items_.count;
  for (Skipped& skipped : skipped_) {
    if (skipped.last == place.item) skipped.last = place.previous;
  }
}

void PendingBlocks::drop(const void* target) noexcept {
  WorkItem* dropped = nullptr;
  Place place{nullptr, items_.first};
  while (WorkItem* const item = place.item) {
    WorkItem* const next = nextOf(*item);
    if (PostedBlock::hasTarget(*item, target)) {
      unlink(place);
      setNext(*item, dropped);
      dropped = item;
    } else {
      place.previous = item;
    }
    place.item = next;
  }
  // Only after the loop, because the destructor of a block may call this function.
  dropList(dropped);
}

void PendingBlocks::dropAll() noexcept {
  skipped_.clear();
  dropList(std::exchange(items_, {}).first);
}

}  // namespace zeb::detail
