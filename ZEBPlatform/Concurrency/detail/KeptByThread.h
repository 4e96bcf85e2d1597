#pragma once

#include <memory>
#include <utility>

namespace zeb::detail {

/// An object that a thread keeps between its uses, because making a new one each time is costly.
/// There is at most one of each type per thread. The thread's end destroys it; objects that are
/// given after that, by destructors of other thread-local objects, are destroyed at once.
/// Size: two words per thread. Cost: no atomic operation, no lock.
/// Do not use it for objects whose memory has no limit: the owner decides whether to give it back.
template <class T>
class KeptByThread {
 public:
  /// What the calling thread keeps, or null.
  static std::unique_ptr<T> take() noexcept {
    return std::unique_ptr<T>(std::exchange(kept_.object, nullptr));
  }
  /// Keeps the object for the thread's next take(). An object that is kept already stays.
  static void give(std::unique_ptr<T> object) noexcept {
    if (kept_.object || kept_.threadIsEnding) return;
    kept_.object = object.release();
    if (!kept_.isKeeperMade) kept_.isKeeperMade = keeper_.isMade;
  }

 private:
  /// Has no destructor, so that it can be used until the thread has ended.
  struct Kept {
    T* object;
    bool isKeeperMade;  ///< spares a look at `keeper_`, which costs a function call
    bool threadIsEnding;
  };
  struct Keeper {
    bool isMade = true;
    ~Keeper() {
      kept_.threadIsEnding = true;
      delete std::exchange(kept_.object, nullptr);
    }
  };

  static inline constinit thread_local Kept kept_{};
  static inline thread_local Keeper keeper_;
};

}  // namespace zeb::detail
