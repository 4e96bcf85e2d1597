#include <ZEBPlatform/Linux/detail/PollSet.h>

#include <sys/epoll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>

namespace zeb {

namespace {

constexpr std::size_t maxEvents = 64;

/// Reported instead of a descriptor by those that are watched for changes only.
constexpr std::uint64_t changeMark = UINT64_MAX;

}  // namespace

bool canBeWaitedFor(int descriptor) noexcept {
  struct stat facts;
  if (fstat(descriptor, &facts) != 0) return false;
  return !S_ISREG(facts.st_mode) && !S_ISDIR(facts.st_mode) && !S_ISBLK(facts.st_mode);
}

PollSet::PollSet() noexcept : descriptor_(epoll_create1(EPOLL_CLOEXEC)) {}

PollSet::~PollSet() {
  if (descriptor_ >= 0) close(descriptor_);
}

bool PollSet::canWatch(int descriptor) const noexcept {
  epoll_event nothing{};
  if (epoll_ctl(descriptor_, EPOLL_CTL_ADD, descriptor, &nothing) != 0) return errno == EEXIST;
  epoll_ctl(descriptor_, EPOLL_CTL_DEL, descriptor, nullptr);
  return true;
}

void PollSet::watch(int descriptor, Readiness wanted) noexcept {
  if (wanted.isNone()) {
    epoll_ctl(descriptor_, EPOLL_CTL_DEL, descriptor, nullptr);
    return;
  }
  epoll_event event{};
  if (wanted.isReadable) event.events |= EPOLLIN;
  if (wanted.isWritable) event.events |= EPOLLOUT;
  event.data.u64 = static_cast<std::uint64_t>(descriptor);
  // A descriptor that was closed while it was watched is no longer in the set.
  if (epoll_ctl(descriptor_, EPOLL_CTL_MOD, descriptor, &event) != 0 && errno == ENOENT) {
    epoll_ctl(descriptor_, EPOLL_CTL_ADD, descriptor, &event);
  }
}

void PollSet::watchChanges(int descriptor) noexcept {
  epoll_event event{};
  event.events = EPOLLIN | EPOLLET;
  event.data.u64 = changeMark;
  epoll_ctl(descriptor_, EPOLL_CTL_ADD, descriptor, &event);
}

void PollSet::wait() noexcept { poll(-1); }
void PollSet::forgetChanges() noexcept { poll(0); }

void PollSet::poll(int milliseconds) noexcept {
  std::array<epoll_event, maxEvents> events;
  epoll_wait(descriptor_, events.data(), static_cast<int>(events.size()), milliseconds);
}

std::size_t PollSet::collect(std::span<ReadyDescriptor> ready) noexcept {
  std::array<epoll_event, maxEvents> events;
  const int room = static_cast<int>(std::min(ready.size(), events.size()));
  const int found = epoll_wait(descriptor_, events.data(), room, 0);
  std::size_t collected = 0;
  for (int index = 0; index < found; ++index) {
    const epoll_event event = events[static_cast<std::size_t>(index)];
    if (event.data.u64 == changeMark) continue;
    const bool isBroken = event.events & (EPOLLERR | EPOLLHUP);
    ready[collected++] = {static_cast<int>(event.data.u64),
                          {.isReadable = isBroken || (event.events & EPOLLIN),
                           .isWritable = isBroken || (event.events & EPOLLOUT)}};
  }
  return collected;
}

}  // namespace zeb
