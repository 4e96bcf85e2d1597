#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zeb::detail {

/// The process's one captured stack, which a signal handler writes and the interrupted thread reads
/// afterwards.
class StackRecord {
 public:
  static constexpr std::size_t maxFrames = 128;

  /// Captures the calling thread's stack, unless there is a capture already. `context` is the
  /// signal handler's third argument. Safe in signal handlers as `captureInterruptedCallStack` is.
  void capture(const void* context) noexcept;

  /// The return addresses of the capture; empty if there is none. Valid until `clear`.
  std::span<void* const> frames() const noexcept;
  /// Makes room for the next capture.
  void clear() noexcept;

 private:
  /// `writing` keeps the handlers of two threads from capturing at the same time.
  enum State : std::uint8_t { empty = 0, ready = 1, writing = 2 };

  std::atomic<std::uint8_t> state_{empty};
  std::size_t count_ = 0;
  std::array<void*, maxFrames> frames_{};
};

}  // namespace zeb::detail
