#include <ZEBPlatform/RunLoop/RunLoopModesPrivate.h>

#include <algorithm>

namespace zeb::detail {

RunLoopModes::RunLoopModes()
    : default_(findOrMake(NSDefaultRunLoopMode)),
      common_(findOrMake(NSRunLoopCommonModes)),
      watched_(&default_) {}

RunLoopMode* RunLoopModes::find(const NSString& name) noexcept {
  for (const auto& mode : modes_) {
    if (mode->name == name) return mode.get();
  }
  return nullptr;
}

RunLoopMode& RunLoopModes::findOrMake(const NSString& name) {
  if (RunLoopMode* const mode = find(name)) return *mode;
  return *modes_.emplace_back(std::make_unique<RunLoopMode>(name));
}

void RunLoopModes::forgetIfUnused(RunLoopMode& mode) noexcept {
  const bool isEmpty = std::ranges::all_of(mode.items, &ItemList::empty);
  if (!isEmpty || mode.timerCount > 0 || mode.runCount > 0) return;
  if (mode.isCommon || &mode == &common_) return;
  if (watched_ == &mode) watched_ = nullptr;
  std::erase_if(modes_, [&](const auto& one) { return one.get() == &mode; });
}

RunLoopModes::Run::Run(RunLoopModes& modes, const NSString& name)
    : modes_(modes), mode_(modes.beginRun(name)) {}

RunLoopModes::Run::~Run() {
  const LockGuard guard(modes_.lock_);
  --mode_.runCount;
  modes_.forgetIfUnused(mode_);
}

RunLoopMode& RunLoopModes::beginRun(const NSString& name) {
  const LockGuard guard(lock_);
  RunLoopMode& mode = findOrMake(name);
  ++mode.runCount;
  return mode;
}

void RunLoopModes::makeCommon(const NSString& modeName, PollSet* pollSet) {
  const LockGuard guard(lock_);
  RunLoopMode& mode = findOrMake(modeName);
  mode.isCommon = true;
  if (watched_ != &mode || !pollSet) return;
  for (const Ref<RunLoopItem>& source : listOf(common_, Kind::descriptorSource)) {
    watchLocked(static_cast<RunLoopDescriptorSource&>(*source).descriptor(), *pollSet);
  }
}

bool RunLoopModes::isClosed() {
  const LockGuard guard(lock_);
  return isClosed_;
}

std::span<const Ref<RunLoopItem>> RunLoopModes::sourcesOfDescriptor(RunLoopMode& mode,
                                                                    int descriptor) noexcept {
  const auto orderOf = [](auto& each) { return each->order_; };
  return std::ranges::equal_range(listOf(mode, Kind::descriptorSource), descriptor, {}, orderOf);
}

bool RunLoopModes::insert(RunLoopItem& item, const NSString& modeName) {
  const LockGuard guard(lock_);
  if (isClosed_) return false;
  RunLoopMode& mode = findOrMake(modeName);
  if (item.kind_ == Kind::timer) {
    insertTimer(static_cast<NSTimer&>(item), mode);
    return true;
  }
  ItemList& list = listOf(mode, item.kind_);
  if (std::ranges::find(list, &item, &Ref<RunLoopItem>::get) != list.end()) return true;
  const auto orderOf = [](auto& each) { return each->order_; };
  list.insert(std::ranges::upper_bound(list, item.order_, {}, orderOf), Ref(&item));
  ++counts_[indexOf(item.kind_)];
  return true;
}

void RunLoopModes::removeFrom(RunLoopMode& mode, RunLoopItem& item, ReleasedItems& released) {
  ItemList& list = listOf(mode, item.kind_);
  const auto place = std::ranges::find(list, &item, &Ref<RunLoopItem>::get);
  if (place == list.end()) return;
  released.push_back(std::move(*place));
  list.erase(place);
  --counts_[indexOf(item.kind_)];
  forgetIfUnused(mode);
}

RunLoopModes::ReleasedItems RunLoopModes::remove(RunLoopItem& item, const NSString& modeName) {
  ReleasedItems released;
  const LockGuard guard(lock_);
  if (RunLoopMode* const mode = find(modeName)) removeFrom(*mode, item, released);
  return released;
}

RunLoopModes::ReleasedItems RunLoopModes::remove(RunLoopItem& item) {
  ReleasedItems released;
  const LockGuard guard(lock_);
  if (item.kind_ == Kind::timer) {
    removeTimer(static_cast<NSTimer&>(item), released);
    return released;
  }
  for (std::size_t index = modes_.size(); index-- > 0;) removeFrom(*modes_[index], item, released);
  return released;
}

RunLoopModes::ReleasedItems RunLoopModes::close() {
  ReleasedItems released;
  const LockGuard guard(lock_);
  isClosed_ = true;
  for (const auto& mode : modes_) {
    for (const ItemList& list : mode->items) {
      released.insert(released.end(), list.begin(), list.end());
    }
    while (DeadlineNode* node = mode->timers.takeDue(UINT64_MAX)) {
      released.push_back(static_cast<TimerNode*>(node)->timer);
    }
  }
  return released;
}

std::vector<Ref<RunLoopSource>> RunLoopModes::pendingSources(RunLoopMode& mode) {
  std::vector<Ref<RunLoopSource>> pending;
  const LockGuard guard(lock_);
  visitActive(mode, [&](RunLoopMode& active) {
    for (const Ref<RunLoopItem>& item : listOf(active, Kind::source)) {
      auto& source = static_cast<RunLoopSource&>(*item);
      if (source.isPending()) pending.push_back(Ref(&source));
    }
  });
  return pending;
}

std::vector<Ref<RunLoopObserver>> RunLoopModes::observersOf(RunLoopMode& mode,
                                                            RunLoopActivity activity) {
  std::vector<Ref<RunLoopObserver>> observers;
  const LockGuard guard(lock_);
  visitActive(mode, [&](RunLoopMode& active) {
    for (const Ref<RunLoopItem>& item : listOf(active, Kind::observer)) {
      auto& observer = static_cast<RunLoopObserver&>(*item);
      if (!(observer.activities() & activity)) continue;
      const auto orderOf = [](auto& each) { return each->order(); };
      observers.insert(std::ranges::upper_bound(observers, observer.order(), {}, orderOf),
                       Ref(&observer));
    }
  });
  return observers;
}

std::vector<Ref<RunLoopDescriptorSource>> RunLoopModes::sourcesOf(RunLoopMode& mode,
                                                                  int descriptor) {
  std::vector<Ref<RunLoopDescriptorSource>> sources;
  const LockGuard guard(lock_);
  visitActive(mode, [&](RunLoopMode& active) {
    for (const Ref<RunLoopItem>& item : sourcesOfDescriptor(active, descriptor)) {
      sources.push_back(Ref(&static_cast<RunLoopDescriptorSource&>(*item)));
    }
  });
  return sources;
}

RunLoopModes::Outlook RunLoopModes::outlook(RunLoopMode& mode) {
  Outlook outlook;
  const LockGuard guard(lock_);
  visitActive(mode, [&](RunLoopMode& active) {
    const ItemList& sources = listOf(active, Kind::source);
    outlook.nextWakeUp = std::min(outlook.nextWakeUp, active.timers.nextWakeUp());
    outlook.hasTimers |= !active.timers.isEmpty();
    outlook.hasInputs |= !sources.empty() || !listOf(active, Kind::descriptorSource).empty() ||
                         !listOf(active, Kind::port).empty();
    outlook.hasPendingSource |= std::ranges::any_of(
        sources, [](auto& source) { return static_cast<RunLoopSource&>(*source).isPending(); });
  });
  return outlook;
}

void RunLoopModes::watchLocked(int descriptor, PollSet& pollSet) {
  std::uint32_t events = 0;
  const auto addEvents = [&](RunLoopMode& active) {
    for (const Ref<RunLoopItem>& item : sourcesOfDescriptor(active, descriptor)) {
      const auto& source = static_cast<RunLoopDescriptorSource&>(*item);
      if (!source.isResting()) events |= source.events();
    }
  };
  // The watched mode may no longer exist although the descriptor of its last source is still
  // watched.
  if (watched_) visitActive(*watched_, addEvents);
  pollSet.watch(descriptor, {.isReadable = (events & DescriptorReadable) != 0,
                             .isWritable = (events & DescriptorWritable) != 0});
}

bool RunLoopModes::canWatch(int descriptor, const PollSet& pollSet) {
  const LockGuard guard(lock_);
  return pollSet.canWatch(descriptor);
}

void RunLoopModes::watch(int descriptor, PollSet& pollSet) {
  const LockGuard guard(lock_);
  watchLocked(descriptor, pollSet);
}

void RunLoopModes::watchMode(RunLoopMode& mode, PollSet& pollSet) {
  const LockGuard guard(lock_);
  if (watched_ == &mode) return;
  RunLoopMode* const before = std::exchange(watched_, &mode);
  for (RunLoopMode* changed : {before, &mode, &common_}) {
    if (!changed) continue;
    for (const Ref<RunLoopItem>& source : listOf(*changed, Kind::descriptorSource)) {
      watchLocked(static_cast<RunLoopDescriptorSource&>(*source).descriptor(), pollSet);
    }
  }
}

}  // namespace zeb::detail
