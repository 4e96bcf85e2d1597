#include <Dispatch/WorkItemMemory.h>

#include <array>
#include <atomic>
#include <mutex>
#include <new>

// Sanitizers follow a block from its allocation to its release only if it is not used again in between.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZEB_REUSE_BLOCKS 0
#elif defined(__has_feature)
#define ZEB_REUSE_BLOCKS !(__has_feature(address_sanitizer) || __has_feature(thread_sanitizer))
#else
#define ZEB_REUSE_BLOCKS 1
#endif

namespace zeb::detail {

namespace {

struct Block {
  Block* next;
};

/// Free blocks in a list.
struct Batch {
  Block* first = nullptr;
  std::size_t count = 0;

  void push(void* memory) noexcept {
    first = new (memory) Block{first};
    ++count;
  }
  Block* pop() noexcept {
    Block* block = first;
    first = block->next;
    --count;
    return block;
  }
  void giveBack() noexcept {
    while (count > 0) ::operator delete(pop());
  }
};

constexpr std::size_t blocksPerBatch = 64;

/// Full batches on their way from threads that free to threads that allocate; so many at most, and the rest
/// goes back to the system.
class Exchange {
 public:
  void put(Batch batch) noexcept {
    {
      std::lock_guard guard(mutex_);
      const std::size_t count = count_.load(std::memory_order_relaxed);
      if (count < batches_.size()) {
        batches_[count] = batch;
        count_.store(count + 1, std::memory_order_relaxed);
        return;
      }
    }
    batch.giveBack();
  }

  Batch take() noexcept {
    if (count_.load(std::memory_order_relaxed) == 0) return {};
    std::lock_guard guard(mutex_);
    const std::size_t count = count_.load(std::memory_order_relaxed);
    if (count == 0) return {};
    count_.store(count - 1, std::memory_order_relaxed);
    return batches_[count - 1];
  }

 private:
  std::mutex mutex_;
  std::atomic<std::size_t> count_{0};
  std::array<Batch, 64> batches_;
};

Exchange& exchange() {
  static auto* instance = new Exchange;
  return *instance;
}

/// What a thread keeps: two batches, so that it does not exchange one at every turn of its luck.
struct ThreadBlocks {
  Batch current;
  Batch spare;
  bool isOver = false;
};
constinit thread_local ThreadBlocks blocks;

/// Gives the thread's blocks back at its end.
struct AtThreadEnd {
  ~AtThreadEnd() {
    blocks.isOver = true;
    blocks.current.giveBack();
    blocks.spare.giveBack();
  }
  /// Only what is used is made, and destroyed.
  void use() noexcept {}
};
thread_local AtThreadEnd atThreadEnd;

}  // namespace

void* WorkItemMemory::allocate() {
#if ZEB_REUSE_BLOCKS
  if (blocks.current.count == 0) {
    std::swap(blocks.current, blocks.spare);
    if (blocks.current.count == 0) blocks.current = exchange().take();
    if (blocks.current.count == 0) return ::operator new(blockSize);
  }
  return blocks.current.pop();
#else
  return ::operator new(blockSize);
#endif
}

void WorkItemMemory::free(void* block) noexcept {
#if ZEB_REUSE_BLOCKS
  if (blocks.current.count == blocksPerBatch) {
    if (blocks.spare.count > 0) exchange().put(blocks.spare);
    blocks.spare = blocks.current;
    blocks.current = {};
  }
  if (blocks.current.count == 0) atThreadEnd.use();
  if (!blocks.isOver) {
    blocks.current.push(block);
    return;
  }
#endif
  ::operator delete(block);
}

}  // namespace zeb::detail
