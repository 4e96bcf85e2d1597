#pragma once

#include <ZEBPlatform/Linux/detail/Console.h>

#include <atomic>
#include <cstdint>
#include <utility>

namespace zeb::detail {

/// A value that many threads read while others replace it by a changed copy. A reader pins the
/// current snapshot and uses it, whatever is replaced meanwhile.
///
/// Memory ordering: what a thread did before replace() is visible to the threads that pin the new
/// snapshot, and what threads did with a snapshot is visible to the thread that destroys it.
/// Lifetime: each snapshot has its own counter, and its last pin destroys it at once, however many
/// pins of other snapshots exist. The pointer itself must outlive pin() calls, but not the pins.
/// Size: 16 bytes, and eight for each snapshot. Cost: pin() and the end of a pin are one atomic
/// operation each, without a lock; replace() allocates.
/// Fairness: readers never wait. Writers that change a copy of the value need a lock among
/// themselves.
/// Do not use it for values that are replaced about as often as they are read.
template <class T>
class SnapshotPointer {
  struct Snapshot;

 public:
  /// Keeps one snapshot readable; empty if there was none. May be passed to another thread.
  class Pin {
   public:
    Pin() noexcept = default;
    Pin(Pin&& other) noexcept : snapshot_(std::exchange(other.snapshot_, nullptr)) {}
    Pin& operator=(Pin other) noexcept {
      std::swap(snapshot_, other.snapshot_);
      return *this;
    }
    ~Pin() {
      if (snapshot_ && snapshot_->pins.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        delete snapshot_;
      }
    }

    explicit operator bool() const noexcept { return snapshot_ != nullptr; }
    const T& operator*() const noexcept { return snapshot_->value; }
    const T* operator->() const noexcept { return &snapshot_->value; }

   private:
    friend class SnapshotPointer;
    explicit Pin(Snapshot* snapshot) noexcept : snapshot_(snapshot) {}

    Snapshot* snapshot_ = nullptr;
  };

  /// Empty.
  SnapshotPointer() noexcept = default;
  SnapshotPointer(const SnapshotPointer&) = delete;
  SnapshotPointer& operator=(const SnapshotPointer&) = delete;
  /// Snapshots that are still pinned stay alive.
  ~SnapshotPointer() { (void)clear(); }

  /// The current snapshot. Any thread.
  [[nodiscard]] Pin pin() noexcept {
    const std::uint64_t word = word_.fetch_add(1, std::memory_order_acquire);
    if (countIn(word) >= maxCount) [[unlikely]]
      settle(snapshotIn(word));
    return Pin(snapshotIn(word));
  }

  /// Whether a pin is of the current snapshot, so that it can be used in place of a new one. Costs
  /// no atomic change. Any thread.
  [[nodiscard]] bool isCurrent(const Pin& pin) const noexcept {
    return snapshotIn(word_.load(std::memory_order_acquire)) == pin.snapshot_;
  }

  /// The current value or null, for a caller that keeps other threads from replacing it meanwhile.
  const T* get() const noexcept {
    const Snapshot* snapshot = snapshotIn(word_.load(std::memory_order_acquire));
    return snapshot ? &snapshot->value : nullptr;
  }

  /// Makes `value` the current one. Answers a pin of the previous one, so that the caller decides
  /// where it is destroyed if no other thread reads it: after unlocking, for instance. Any thread.
  [[nodiscard]] Pin replace(T value) { return exchange(new Snapshot(std::move(value))); }
  /// Like replace(), but leaves no current value.
  [[nodiscard]] Pin clear() noexcept { return exchange(nullptr); }

 private:
  // The upper 48 bits of the word hold the current snapshot's address: Linux gives a program no
  // larger addresses unless it asks for them. The lower bits count the pins since the word was set
  // or settled. A snapshot's own counter starts with the claim of being current. Pins are added to
  // it when they are settled and subtracted when they end, so it may fall below the claim
  // meanwhile, but not to zero.
  static constexpr unsigned countBits = 16;
  /// From this count on, each pin settles it. An overflow would take 2^15 more threads that pin
  /// before one of them has settled it.
  static constexpr std::uint64_t maxCount = std::uint64_t{1} << (countBits - 1);
  static constexpr std::int64_t currentClaim = std::int64_t{1} << 32;

  struct Snapshot {
    explicit Snapshot(T itsValue) : value(std::move(itsValue)) {}
    const T value;
    std::atomic<std::int64_t> pins{currentClaim};
  };
  static_assert(sizeof(Snapshot*) == sizeof(std::uint64_t));

  static Snapshot* snapshotIn(std::uint64_t word) noexcept {
    return reinterpret_cast<Snapshot*>(word >> countBits);
  }
  static std::uint64_t countIn(std::uint64_t word) noexcept {
    return word & ((std::uint64_t{1} << countBits) - 1);
  }

  Pin exchange(Snapshot* fresh) noexcept {
    const auto address = reinterpret_cast<std::uint64_t>(fresh);
    if (address >> (64 - countBits) != 0) {
      fatal("SnapshotPointer: the system gave memory at an address of more than 48 bits");
    }
    const std::uint64_t old = word_.exchange(address << countBits, std::memory_order_acq_rel);
    forLeakCheckers_.store(fresh, std::memory_order_relaxed);
    Snapshot* replaced = snapshotIn(old);
    if (replaced) {
      // The answered pin replaces the claim.
      replaced->pins.fetch_add(static_cast<std::int64_t>(countIn(old)) + 1 - currentClaim,
                               std::memory_order_relaxed);
    }
    return Pin(replaced);
  }

  /// Moves the count from the word to the snapshot before the count overflows. The caller has
  /// pinned the snapshot.
  void settle(Snapshot* pinned) noexcept {
    std::uint64_t word = word_.load(std::memory_order_relaxed);
    while (snapshotIn(word) == pinned && countIn(word) >= maxCount) {
      const auto count = static_cast<std::int64_t>(countIn(word));
      if (pinned) pinned->pins.fetch_add(count, std::memory_order_relaxed);
      const std::uint64_t settled = word - countIn(word);
      if (word_.compare_exchange_weak(word, settled, std::memory_order_relaxed)) return;
      if (pinned) pinned->pins.fetch_sub(count, std::memory_order_relaxed);
    }
  }

  std::atomic<std::uint64_t> word_{0};
  /// Never read. Leak checkers, which search memory for addresses, do not recognise the word.
  std::atomic<const Snapshot*> forLeakCheckers_{nullptr};
};

}  // namespace zeb::detail
