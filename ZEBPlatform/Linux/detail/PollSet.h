#pragma once

#include <cstddef>
#include <span>

namespace zeb {

/// What a descriptor is watched for, or ready for. An error or hang-up counts as both.
struct Readiness {
  bool isReadable = false;
  bool isWritable = false;

  bool isNone() const noexcept { return !isReadable && !isWritable; }
  bool operator==(const Readiness&) const noexcept = default;
};

struct ReadyDescriptor {
  int descriptor;
  Readiness readiness;
};

/// Whether the descriptor is of a kind that can be waited for: not a file, a folder or a disk, and not closed.
bool canBeWaitedFor(int descriptor) noexcept;

/// Waits for many file descriptors at once. Any thread may change the set while another one waits on it.
class PollSet {
 public:
  PollSet() noexcept;
  PollSet(const PollSet&) = delete;
  PollSet& operator=(const PollSet&) = delete;
  ~PollSet();

  /// Itself a descriptor that can be waited for: readable while `collect` would find something. Negative when the
  /// process had none left: then the object is of no use.
  int descriptor() const noexcept { return descriptor_; }

  /// Whether the set can wait for the descriptor: not for files, folders, closed ones, devices that know no
  /// waiting, nor when the system's limits are reached. Not while another thread changes the set.
  bool canWatch(int descriptor) const noexcept;

  /// Sets what a descriptor is watched for; nothing removes it. It is reported again and again while it is
  /// ready.
  void watch(int descriptor, Readiness wanted) noexcept;
  /// Watches for the moments when a descriptor becomes readable: each is reported once, whether or not
  /// anybody reads.
  void watchChanges(int descriptor) noexcept;

  /// Waits until something is ready, or a signal arrives. Collects nothing, but the changes are reported.
  void wait() noexcept;
  /// Takes the changes that there were as reported.
  void forgetChanges() noexcept;
  /// What is ready now, as much of it as fits. What was reported last comes last the next time.
  std::size_t collect(std::span<ReadyDescriptor> ready) noexcept;

 private:
  void poll(int milliseconds) noexcept;

  const int descriptor_;
};

}  // namespace zeb
