#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/MemoryReuse.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <array>
#include <cstdint>
#include <new>
#include <utility>

// The memory of small objects. General allocators take about as long as three atomic operations for
// each block if many objects are alive. Here each thread keeps the blocks that it has freed, sorted
// by their sizes. A thread passes on what it does not need by whole batches, because objects are
// often released by other threads than those that make them. All blocks come from the general
// allocator one by one, so that each can return to it at any time.

namespace zeb {

namespace {

/// A block without an object.
struct FreeBlock {
  FreeBlock* next;       ///< of its list
  FreeBlock* nextBatch;  ///< valid in the first block of a batch in the depot
};

// The sizes are 16 bytes apart and 8 bytes more than a multiple of 16, which are the sizes that the
// C library's allocator gives without waste.
constexpr std::size_t sizeClasses = 7;
constexpr std::size_t sizeOfClass(std::size_t sizeClass) noexcept { return 16 * sizeClass + 24; }
constexpr std::size_t classOfSize(std::size_t size) noexcept {
  return size <= sizeOfClass(0) ? 0 : (size - 9) / 16;
}
constexpr std::size_t maxSize = sizeOfClass(sizeClasses - 1);
static_assert(sizeof(FreeBlock) <= sizeOfClass(0) && classOfSize(maxSize) == sizeClasses - 1);
static_assert(classOfSize(40) == 1 && classOfSize(41) == 2);

constexpr std::uint32_t blocksPerBatch = 32;

void freeAll(FreeBlock* first) noexcept {
  while (first) ::operator delete(std::exchange(first, first->next));
}

/// Full batches for all threads, up to a limit.
///
/// No thread waits here: where another one holds the lock, the general allocator is used instead.
/// So a child process is able to make objects although a thread of its parent held the lock during
/// the fork.
class Depot {
 public:
  /// A batch, or null.
  FreeBlock* take(std::size_t sizeClass) noexcept {
    if (!lock_.try_lock()) return nullptr;
    FreeBlock* const batch = batches_[sizeClass];
    if (batch) {
      batches_[sizeClass] = batch->nextBatch;
      bytes_ -= blocksPerBatch * sizeOfClass(sizeClass);
    }
    lock_.unlock();
    return batch;
  }

  void put(FreeBlock* batch, std::size_t sizeClass) noexcept {
    if (!tryPut(batch, sizeClass)) freeAll(batch);
  }

 private:
  static constexpr std::size_t maxBytes = std::size_t{16} << 20;

  bool tryPut(FreeBlock* batch, std::size_t sizeClass) noexcept {
    if (!lock_.try_lock()) return false;
    const std::size_t bytes = bytes_ + blocksPerBatch * sizeOfClass(sizeClass);
    const bool hasRoom = bytes <= maxBytes;
    if (hasRoom) {
      batch->nextBatch = std::exchange(batches_[sizeClass], batch);
      bytes_ = bytes;
    }
    lock_.unlock();
    return hasRoom;
  }

  detail::Lock lock_;
  std::array<FreeBlock*, sizeClasses> batches_ ZEB_GUARDED_BY(lock_){};
  std::size_t bytes_ ZEB_GUARDED_BY(lock_) = 0;
};
constinit Depot depot;

/// The free blocks of one size that a thread keeps: at most two batches.
struct ThreadBlocks {
  FreeBlock* first = nullptr;
  std::uint32_t count = 0;     ///< of the list that begins with `first`
  std::uint32_t limit = 0;     ///< 0 before the first block is kept and after the thread's end
  FreeBlock* spare = nullptr;  ///< a full batch, or null
};
constinit thread_local std::array<ThreadBlocks, sizeClasses> threadBlocks;
constinit thread_local bool threadIsEnding = false;

struct AtThreadEnd {
  ~AtThreadEnd() {
    threadIsEnding = true;
    for (std::size_t sizeClass = 0; sizeClass < sizeClasses; ++sizeClass) {
      const ThreadBlocks blocks = std::exchange(threadBlocks[sizeClass], {});
      if (blocks.spare) depot.put(blocks.spare, sizeClass);
      freeAll(blocks.first);
    }
  }
  /// Makes sure that this object exists: thread-local objects are made when they are first used.
  void use() noexcept {}
};
thread_local AtThreadEnd atThreadEnd;

/// Answers whether the thread may keep blocks; not after its end has begun.
bool mayKeep(ThreadBlocks& blocks) noexcept {
  if (threadIsEnding) return false;
  atThreadEnd.use();
  blocks.limit = blocksPerBatch;
  return true;
}

void* allocateWithoutList(ThreadBlocks& blocks, std::size_t sizeClass) {
  FreeBlock* batch = std::exchange(blocks.spare, nullptr);
  if (!batch && mayKeep(blocks)) batch = depot.take(sizeClass);
  if (!batch) return ::operator new(sizeOfClass(sizeClass));
  blocks.first = batch->next;
  blocks.count = blocksPerBatch - 1;
  return batch;
}

void freeWithFullList(ThreadBlocks& blocks, std::size_t sizeClass, FreeBlock* block) noexcept {
  if (blocks.limit == 0) {
    if (!mayKeep(blocks)) return ::operator delete(block);
  } else {
    if (blocks.spare) depot.put(blocks.spare, sizeClass);
    blocks.spare = std::exchange(blocks.first, nullptr);
    blocks.count = 0;
  }
  block->next = std::exchange(blocks.first, block);
  ++blocks.count;
}

}  // namespace

void* NSObject::operator new(std::size_t size) {
  if (!detail::reusesMemory || size > maxSize) return ::operator new(size);
  const std::size_t sizeClass = classOfSize(size);
  ThreadBlocks& blocks = threadBlocks[sizeClass];
  FreeBlock* const block = blocks.first;
  if (!block) return allocateWithoutList(blocks, sizeClass);
  blocks.first = block->next;
  --blocks.count;
  // Mostly the next object is made soon, and its memory was last used long ago.
  __builtin_prefetch(block->next, 1);
  return block;
}

void NSObject::operator delete(void* memory, std::size_t size) noexcept {
  if (!detail::reusesMemory || size > maxSize) return ::operator delete(memory);
  const std::size_t sizeClass = classOfSize(size);
  ThreadBlocks& blocks = threadBlocks[sizeClass];
  auto* const block = static_cast<FreeBlock*>(memory);
  if (blocks.count == blocks.limit) return freeWithFullList(blocks, sizeClass, block);
  block->next = std::exchange(blocks.first, block);
  ++blocks.count;
}

}  // namespace zeb
