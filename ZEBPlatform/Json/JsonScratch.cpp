#include <ZEBPlatform/Concurrency/detail/KeptByThread.h>
#include <ZEBPlatform/Json/JsonScratchPrivate.h>
#include <ZEBPlatform/Linux/detail/MemoryPages.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <utility>

namespace zeb::detail {

namespace {

/// Bytes of address space that a thread may keep. Most of it holds no memory.
constexpr std::size_t maxReservedBytes = std::size_t{64} << 20;

// How the memory that a thread may always keep is divided when the rest has to be given back.
constexpr std::size_t maxKeptIndexBytes = JsonScratchLease::maxKeptBytesPerThread / 2;
constexpr std::size_t maxKeptStackBytes = JsonScratchLease::maxKeptBytesPerThread / 4;
constexpr std::size_t maxKeptKeyBytes = JsonScratchLease::maxKeptBytesPerThread / 4;

std::atomic<std::size_t> sharedKeptBytes{0};

bool takeSharedBytes(std::size_t bytes) noexcept {
  std::size_t taken = sharedKeptBytes.load(std::memory_order_relaxed);
  do {
    if (bytes > JsonScratchLease::maxSharedKeptBytes - taken) return false;
  } while (!sharedKeptBytes.compare_exchange_weak(taken, taken + bytes, std::memory_order_relaxed));
  return true;
}

}  // namespace

Words* WordStack::reserve(std::size_t words) {
  words += wordsAtOnce;
  if (words > capacity_) {
    memory_.reset();
    capacity_ = used_ = 0;
    memory_.reset(static_cast<Words*>(std::malloc(words * sizeof(Words))));
    if (!memory_) throw std::bad_alloc();
    capacity_ = words;
  }
  used_ = std::max(used_, words);
  return memory_.get();
}

void WordStack::discardAfter(std::size_t bytes) noexcept {
  if (usedBytes() <= bytes) return;
  discardPages(reinterpret_cast<char*>(memory_.get()) + bytes, reservedBytes() - bytes);
  used_ = bytes / sizeof(Words);
}

void WordStack::Free::operator()(Words* words) const noexcept { std::free(words); }

JsonScratch::~JsonScratch() { sharedKeptBytes.fetch_sub(sharedBytes_, std::memory_order_relaxed); }

bool JsonScratch::prepareToBeKept() noexcept {
  const std::size_t used = structure.usedBytes() + stack.usedBytes() + keys.reservedBytes();
  if (structure.reservedBytes() + stack.reservedBytes() > maxReservedBytes) {
    // The pages go back to the system, not only to the allocator.
    discardMostMemory();
    return false;
  }
  if (used <= JsonScratchLease::maxKeptBytesPerThread + sharedBytes_) return true;
  const std::size_t wanted = used - JsonScratchLease::maxKeptBytesPerThread - sharedBytes_;
  if (takeSharedBytes(wanted)) {
    sharedBytes_ += wanted;
  } else {
    discardMostMemory();
    sharedKeptBytes.fetch_sub(std::exchange(sharedBytes_, 0), std::memory_order_relaxed);
  }
  return true;
}

void JsonScratch::discardMostMemory() noexcept {
  structure.discardAfter(maxKeptIndexBytes);
  stack.discardAfter(maxKeptStackBytes);
  keys.discardIfLargerThan(maxKeptKeyBytes);
}

JsonScratchLease::JsonScratchLease() : scratch_(KeptByThread<JsonScratch>::take()) {
  if (!scratch_) scratch_ = std::make_unique<JsonScratch>();
}

JsonScratchLease::~JsonScratchLease() {
  // Documents that are read while the thread ends keep nothing, and return what is shared.
  if (scratch_->prepareToBeKept()) KeptByThread<JsonScratch>::give(std::move(scratch_));
}

}  // namespace zeb::detail
