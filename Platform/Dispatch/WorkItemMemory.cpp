#include <Dispatch/WorkItemMemory.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <new>
#include <utility>

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

constexpr std::size_t pageSize = 4096;
constexpr std::uint32_t blocksPerPage = pageSize / WorkItemMemory::blockSize - 1;

/// Blocks, and in the place of the first one what is known about them.
struct alignas(pageSize) Page {
  std::atomic<std::uint32_t> freed{0};  ///< its thread counts the blocks that it will not use
  Page* next = nullptr;

  static Page& of(void* block) noexcept {
    return *reinterpret_cast<Page*>(reinterpret_cast<std::uintptr_t>(block) & ~(pageSize - 1));
  }
  void* block(std::uint32_t index) noexcept {
    return reinterpret_cast<std::byte*>(this) + (index + 1) * WorkItemMemory::blockSize;
  }
};

/// Free pages for all threads: so many at most, and the rest goes back to the system.
class PagePool {
 public:
  static PagePool& shared() {
    static auto* pool = new PagePool;
    return *pool;
  }

  Page* take() {
    {
      std::lock_guard guard(mutex_);
      if (Page* const page = first_) {
        first_ = page->next;
        --count_;
        return page;
      }
    }
    return new Page;
  }

  void put(Page* page) noexcept {
    page->freed.store(0, std::memory_order_relaxed);
    {
      std::lock_guard guard(mutex_);
      if (count_ < mostPages) {
        page->next = std::exchange(first_, page);
        ++count_;
        return;
      }
    }
    delete page;
  }

 private:
  static constexpr std::size_t mostPages = 1024;

  std::mutex mutex_;
  Page* first_ = nullptr;
  std::size_t count_ = 0;
};

void addFreed(Page& page, std::uint32_t count) noexcept {
  if (page.freed.fetch_add(count, std::memory_order_acq_rel) + count == blocksPerPage) {
    PagePool::shared().put(&page);
  }
}

/// What a thread is at.
struct ThreadPages {
  Page* source = nullptr;  ///< of new blocks
  std::uint32_t used = blocksPerPage;
  Page* freeing = nullptr;  ///< the page of the last freed blocks, which does not know of them yet
  std::uint32_t freed = 0;
  bool isOver = false;
};
constinit thread_local ThreadPages pages;

struct AtThreadEnd {
  ~AtThreadEnd() {
    pages.isOver = true;
    if (pages.freeing) addFreed(*pages.freeing, pages.freed);
    if (pages.used < blocksPerPage) addFreed(*pages.source, blocksPerPage - pages.used);
  }
  /// Only what is used is made, and destroyed.
  void use() noexcept {}
};
thread_local AtThreadEnd atThreadEnd;

[[maybe_unused]] void* allocateFromNewPage() {
  Page* const page = PagePool::shared().take();
  if (pages.isOver) {
    addFreed(*page, blocksPerPage - 1);
    return page->block(0);
  }
  atThreadEnd.use();
  pages.source = page;
  pages.used = 1;
  return page->block(0);
}

[[maybe_unused]] void freeInOtherPage(Page& page) noexcept {
  if (pages.isOver) return addFreed(page, 1);
  atThreadEnd.use();
  if (pages.freeing) addFreed(*pages.freeing, pages.freed);
  pages.freeing = &page;
  pages.freed = 1;
}

}  // namespace

void* WorkItemMemory::allocate() {
#if ZEB_REUSE_BLOCKS
  if (pages.used == blocksPerPage || pages.isOver) return allocateFromNewPage();
  return pages.source->block(pages.used++);
#else
  return ::operator new(blockSize);
#endif
}

void WorkItemMemory::free(void* block) noexcept {
#if ZEB_REUSE_BLOCKS
  Page& page = Page::of(block);
  if (&page != pages.freeing || pages.isOver) return freeInOtherPage(page);
  ++pages.freed;
#else
  ::operator delete(block);
#endif
}

}  // namespace zeb::detail
