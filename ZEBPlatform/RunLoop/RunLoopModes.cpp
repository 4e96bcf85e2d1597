#include <ZEBPlatform/Concurrency/detail/Seconds.h>
#include <ZEBPlatform/RunLoop/RunLoopModesPrivate.h>

#include <algorithm>

namespace zeb::detail {

namespace {

template <class Item>
std::vector<Ref<Item>>& listOf(RunLoopMode& mode) noexcept {
  return std::get<std::vector<Ref<Item>>>(mode.items);
}

template <class Item>
auto placeOf(std::vector<Ref<Item>>& list, const Item& item) noexcept {
  return std::find_if(list.begin(), list.end(), [&](auto& each) { return each.get() == &item; });
}

/// Where a new item goes: behind those that are to come before it.
template <class Item>
auto placeFor(std::vector<Ref<Item>>& list, const Item&) noexcept {
  return list.end();
}
auto placeFor(std::vector<Ref<RunLoopObserver>>& list, const RunLoopObserver& observer) noexcept {
  return std::upper_bound(list.begin(), list.end(), observer.order(),
                          [](auto order, auto& each) { return order < each->order(); });
}
auto placeFor(std::vector<Ref<RunLoopDescriptorSource>>& list,
              const RunLoopDescriptorSource& source) noexcept {
  return std::upper_bound(
      list.begin(), list.end(), source.descriptor(),
      [](int descriptor, auto& each) { return descriptor < each->descriptor(); });
}

auto sourcesOfDescriptor(RunLoopMode& mode, int descriptor) noexcept {
  auto& list = listOf<RunLoopDescriptorSource>(mode);
  return std::ranges::equal_range(list, descriptor, {},
                                  [](auto& each) { return each->descriptor(); });
}

}  // namespace

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
  const bool isEmpty =
      std::apply([](const auto&... lists) { return (lists.empty() && ...); }, mode.items);
  if (!isEmpty || mode.timerCount > 0 || mode.runCount > 0) return;
  if (mode.isCommon || &mode == &common_) return;
  if (watched_ == &mode) watched_ = nullptr;
  std::erase_if(modes_, [&](const auto& one) { return one.get() == &mode; });
}

RunLoopModes::Run::Run(RunLoopModes& modes, const NSString& name)
    : modes_(modes), mode_(modes.beginRun(name)) {}

RunLoopModes::Run::~Run() {
  std::lock_guard guard(modes_.mutex_);
  --mode_.runCount;
  modes_.forgetIfUnused(mode_);
}

RunLoopMode& RunLoopModes::beginRun(const NSString& name) {
  std::lock_guard guard(mutex_);
  RunLoopMode& mode = findOrMake(name);
  ++mode.runCount;
  return mode;
}

void RunLoopModes::makeCommon(const NSString& modeName, PollSet* pollSet) {
  std::lock_guard guard(mutex_);
  RunLoopMode& mode = findOrMake(modeName);
  mode.isCommon = true;
  if (watched_ != &mode || !pollSet) return;
  for (const auto& source : listOf<RunLoopDescriptorSource>(common_)) {
    watchNow(source->descriptor(), *pollSet);
  }
}

bool RunLoopModes::isClosed() {
  std::lock_guard guard(mutex_);
  return isClosed_;
}

template <class Visit>
void RunLoopModes::visitActive(RunLoopMode& mode, const Visit& visit) {
  visit(mode);
  if (mode.isCommon) visit(common_);
}

template <class Item>
bool RunLoopModes::insert(Item& item, const NSString& modeName) {
  std::lock_guard guard(mutex_);
  if (isClosed_) return false;
  auto& list = listOf<Item>(findOrMake(modeName));
  if (placeOf(list, item) != list.end()) return true;
  list.insert(placeFor(list, item), Ref<Item>(&item));
  ++std::get<Count<Item>>(counts_).value;
  return true;
}

bool RunLoopModes::insert(NSTimer& timer, const NSString& modeName) {
  std::lock_guard guard(mutex_);
  if (isClosed_) return false;
  RunLoopMode& mode = findOrMake(modeName);
  const auto isInMode = [&](auto& node) { return &node->mode == &mode; };
  if (std::ranges::none_of(timer.nodes_, isInMode)) {
    timer.nodes_.push_back(std::make_unique<TimerNode>(Ref<NSTimer>(&timer), mode));
    ++mode.timerCount;
  }
  return true;
}

template <class Item>
void RunLoopModes::removeFrom(RunLoopMode& mode, Item& item, ReleasedItems& released) {
  auto& list = listOf<Item>(mode);
  const auto place = placeOf(list, item);
  if (place == list.end()) return;
  released.push_back(std::move(*place));
  list.erase(place);
  --std::get<Count<Item>>(counts_).value;
  forgetIfUnused(mode);
}

template <class Item>
RunLoopModes::ReleasedItems RunLoopModes::remove(Item& item, const NSString& modeName) {
  ReleasedItems released;
  std::lock_guard guard(mutex_);
  if (RunLoopMode* const mode = find(modeName)) removeFrom(*mode, item, released);
  return released;
}

template <class Item>
RunLoopModes::ReleasedItems RunLoopModes::remove(Item& item) {
  ReleasedItems released;
  std::lock_guard guard(mutex_);
  for (std::size_t index = modes_.size(); index-- > 0;) removeFrom(*modes_[index], item, released);
  return released;
}

RunLoopModes::ReleasedItems RunLoopModes::remove(NSTimer& timer) {
  ReleasedItems released;
  std::lock_guard guard(mutex_);
  for (const auto& node : timer.nodes_) {
    node->mode.timers.remove(*node);
    released.push_back(node->timer);
    --node->mode.timerCount;
    forgetIfUnused(node->mode);
  }
  timer.nodes_.clear();
  return released;
}

template bool RunLoopModes::insert(RunLoopObserver&, const NSString&);
template bool RunLoopModes::insert(RunLoopSource&, const NSString&);
template bool RunLoopModes::insert(RunLoopDescriptorSource&, const NSString&);
template bool RunLoopModes::insert(NSPort&, const NSString&);
template RunLoopModes::ReleasedItems RunLoopModes::remove(RunLoopObserver&, const NSString&);
template RunLoopModes::ReleasedItems RunLoopModes::remove(RunLoopSource&, const NSString&);
template RunLoopModes::ReleasedItems RunLoopModes::remove(RunLoopDescriptorSource&,
                                                          const NSString&);
template RunLoopModes::ReleasedItems RunLoopModes::remove(NSPort&, const NSString&);
template RunLoopModes::ReleasedItems RunLoopModes::remove(RunLoopObserver&);
template RunLoopModes::ReleasedItems RunLoopModes::remove(RunLoopSource&);
template RunLoopModes::ReleasedItems RunLoopModes::remove(RunLoopDescriptorSource&);
template RunLoopModes::ReleasedItems RunLoopModes::remove(NSPort&);

RunLoopModes::ReleasedItems RunLoopModes::close() {
  ReleasedItems released;
  const auto giveUp = [&](auto& list) {
    released.insert(released.end(), list.begin(), list.end());
  };
  std::lock_guard guard(mutex_);
  isClosed_ = true;
  for (const auto& mode : modes_) {
    std::apply([&](auto&... lists) { (giveUp(lists), ...); }, mode->items);
    while (DeadlineNode* node = mode->timers.takeDue(UINT64_MAX)) {
      released.push_back(static_cast<TimerNode*>(node)->timer);
    }
  }
  return released;
}

bool RunLoopModes::schedule(NSTimer& timer) {
  std::lock_guard guard(mutex_);
  const std::uint64_t leeway = ticksIn(timer.tolerance_);
  bool isSooner = false;
  for (const auto& node : timer.nodes_) {
    DeadlineHeap& timers = node->mode.timers;
    const std::uint64_t before = timers.nextWakeUp();
    node->deadline = std::max(timer.moment_, lastMoment_ + 1);
    node->leeway = leeway;
    timers.put(*node);
    isSooner |= timers.nextWakeUp() < before;
  }
  return isSooner;
}

Ref<NSTimer> RunLoopModes::takeDueTimer(RunLoopMode& mode, std::uint64_t moment) {
  std::lock_guard guard(mutex_);
  lastMoment_ = std::max(lastMoment_, moment);
  DeadlineNode* due = nullptr;
  visitActive(mode, [&](RunLoopMode& active) {
    if (!due) due = active.timers.takeDue(moment);
  });
  return due ? static_cast<TimerNode*>(due)->timer : nullptr;
}

std::vector<Ref<RunLoopSource>> RunLoopModes::signalledSources(RunLoopMode& mode) {
  std::vector<Ref<RunLoopSource>> signalled;
  std::lock_guard guard(mutex_);
  visitActive(mode, [&](RunLoopMode& active) {
    for (const auto& source : listOf<RunLoopSource>(active)) {
      if (source->shallPerform()) signalled.push_back(source);
    }
  });
  return signalled;
}

std::vector<Ref<RunLoopObserver>> RunLoopModes::observersOf(RunLoopMode& mode,
                                                            RunLoopActivity activity) {
  std::vector<Ref<RunLoopObserver>> observers;
  std::lock_guard guard(mutex_);
  visitActive(mode, [&](RunLoopMode& active) {
    for (const auto& observer : listOf<RunLoopObserver>(active)) {
      if (observer->activities() & activity) {
        observers.insert(placeFor(observers, *observer), observer);
      }
    }
  });
  return observers;
}

std::vector<Ref<RunLoopDescriptorSource>> RunLoopModes::sourcesOf(RunLoopMode& mode,
                                                                  int descriptor) {
  std::vector<Ref<RunLoopDescriptorSource>> sources;
  std::lock_guard guard(mutex_);
  visitActive(mode, [&](RunLoopMode& active) {
    const auto found = sourcesOfDescriptor(active, descriptor);
    sources.insert(sources.end(), found.begin(), found.end());
  });
  return sources;
}

RunLoopModes::Outlook RunLoopModes::outlook(RunLoopMode& mode) {
  Outlook outlook;
  std::lock_guard guard(mutex_);
  visitActive(mode, [&](RunLoopMode& active) {
    const auto& [observers, sources, descriptorSources, ports] = active.items;
    outlook.nextWakeUp = std::min(outlook.nextWakeUp, active.timers.nextWakeUp());
    outlook.hasTimers |= !active.timers.isEmpty();
    outlook.hasInputs |= !sources.empty() || !descriptorSources.empty() || !ports.empty();
    outlook.hasSignalledSource |=
        std::ranges::any_of(sources, [](auto& source) { return source->shallPerform(); });
  });
  return outlook;
}

void RunLoopModes::watchNow(int descriptor, PollSet& pollSet) {
  std::uint32_t events = 0;
  const auto addEvents = [&](RunLoopMode& active) {
    for (const auto& source : sourcesOfDescriptor(active, descriptor)) {
      if (!source->isResting()) events |= source->events();
    }
  };
  // The watched mode may have been forgotten with its last source, whose descriptor is still watched.
  if (watched_) visitActive(*watched_, addEvents);
  pollSet.watch(descriptor, {.isReadable = (events & DescriptorReadable) != 0,
                             .isWritable = (events & DescriptorWritable) != 0});
}

bool RunLoopModes::canWatch(int descriptor, const PollSet& pollSet) {
  std::lock_guard guard(mutex_);
  return pollSet.canWatch(descriptor);
}

void RunLoopModes::watch(int descriptor, PollSet& pollSet) {
  std::lock_guard guard(mutex_);
  watchNow(descriptor, pollSet);
}

void RunLoopModes::watchMode(RunLoopMode& mode, PollSet& pollSet) {
  std::lock_guard guard(mutex_);
  if (watched_ == &mode) return;
  RunLoopMode* const before = std::exchange(watched_, &mode);
  for (RunLoopMode* changed : {before, &mode, &common_}) {
    if (!changed) continue;
    for (const auto& source : listOf<RunLoopDescriptorSource>(*changed)) {
      watchNow(source->descriptor(), pollSet);
    }
  }
}

}  // namespace zeb::detail
