#pragma once

#include <cstddef>
#include <span>

namespace zeb {

/// The events that a descriptor is watched for, or that it is ready for. An error or hang-up counts
/// as both.
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

/// Whether the descriptor is of a kind that can be waited for. Files, folders and disks are not,
/// and closed descriptors.
bool canBeWaitedFor(int descriptor) noexcept;

/// Waits for many file descriptors at once. Any thread may change the set while another thread
/// waits.
class PollSet {
 public:
  PollSet() noexcept;
  PollSet(const PollSet&) = delete;
  PollSet& operator=(const PollSet&) = delete;
  ~PollSet();

  /// The set's own descriptor, which is readable while `collect` would find something. Negative if
  /// the process had no descriptor left; the object must not be used then.
  int descriptor() const noexcept { return descriptor_; }

  /// Whether the set can wait for the descriptor. It cannot for files, folders, closed descriptors
  /// and devices that do not support waiting, nor when the system's limits are reached. Must not be
  /// called while another thread changes the set.
  bool canWatch(int descriptor) const noexcept;

  /// Sets the events that a descriptor is watched for; without any it leaves the set. It is
  /// reported again by each `collect` while it is ready.
  void watch(int descriptor, Readiness wanted) noexcept;
  /// Watches for the moments when a descriptor becomes readable. Each is reported once, also if the
  /// descriptor is not read afterwards.
  void watchChanges(int descriptor) noexcept;

  /// Waits until a descriptor is ready or a signal arrives. The changes count as reported
  /// afterwards.
  void wait() noexcept;
  /// Marks all changes so far as reported, without a wait.
  void forgetChanges() noexcept;
  /// Fills `ready` with descriptors that are ready now, at most 64, and answers their number. Those
  /// that were reported last come last the next time, so that all get their turn.
  std::size_t collect(std::span<ReadyDescriptor> ready) noexcept;

 private:
  void poll(int milliseconds) noexcept;

  const int descriptor_;
};

}  // namespace zeb
