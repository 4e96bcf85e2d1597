#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <utility>

namespace zeb::detail {

/// A few objects that are costly to make and used by one thread at a time: a thread takes one,
/// uses it and gives it back. No lock is taken. As many threads as the capacity says can use their
/// objects at the same time without making new ones again and again.
template <class T, void (*destroy)(T*)>
class Spares {
 public:
  Spares() = default;
  Spares(const Spares&) = delete;
  Spares& operator=(const Spares&) = delete;
  ~Spares() {
    for (std::atomic<T*>& place : places_) {
      if (T* spare = place.load(std::memory_order_acquire)) destroy(spare);
    }
  }

  /// One that was given back, or null if the caller must make one.
  T* take() noexcept {
    for (std::atomic<T*>& place : places_) {
      if (!place.load(std::memory_order_relaxed)) continue;
      if (T* spare = place.exchange(nullptr, std::memory_order_acquire)) return spare;
    }
    return nullptr;
  }

  /// Keeps the object for the next caller, or destroys it if there are enough. Null is ignored.
  void give(T* spare) noexcept {
    for (std::atomic<T*>& place : places_) {
      T* expected = nullptr;
      if (!spare || place.compare_exchange_strong(expected, spare, std::memory_order_release,
                                                  std::memory_order_relaxed)) {
        return;
      }
    }
    destroy(spare);
  }

 private:
  static constexpr std::size_t capacity = 8;
  std::array<std::atomic<T*>, capacity> places_{};
};

}  // namespace zeb::detail
