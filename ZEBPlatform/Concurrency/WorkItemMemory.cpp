#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/MemoryReuse.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Concurrency/detail/WorkItemMemory.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <new>
#include <utility>

namespace zeb::detail {

namespace {

constexpr std::size_t pageSize = 4096;
constexpr std::uint32_t blocksPerPage = pageSize / WorkItemMemory::blockSize - 1;

struct Region;

/// Blocks; the page's own state takes the place of the first one.
struct alignas(pageSize) Page {
  /// Freed blocks, and those that its thread will not hand out any more.
  std::atomic<std::uint32_t> freed{0};
  Region* region = nullptr;
  Page* next = nullptr;  ///< of its region's free pages

  static Page& of(void* block) noexcept {
    return *reinterpret_cast<Page*>(reinterpret_cast<std::uintptr_t>(block) & ~(pageSize - 1));
  }
  void* block(std::uint32_t index) noexcept {
    return reinterpret_cast<std::byte*>(this) + (index + 1) * WorkItemMemory::blockSize;
  }
};

/// Pages that are allocated together and freed together. Allocated one by one, each page would
/// waste its own size to be aligned.
struct Region {
  static constexpr std::size_t pageCount = 31;  ///< a 32nd one has the place of the members below

  Region() noexcept {
    for (Page& page : pages) {
      page.region = this;
      page.next = std::exchange(firstFree, &page);
    }
  }

  std::array<Page, pageCount> pages;
  Page* firstFree = nullptr;
  std::size_t freeCount = pageCount;
  // Among the regions with free pages:
  Region* previous = nullptr;
  Region* next = nullptr;
};

/// Free pages for all threads, up to a limit. The rest is returned to the system by whole regions.
class PagePool {
 public:
  static PagePool& shared() {
    static NeverDestroyed<PagePool> pool;
    return *pool;
  }

  Page* take() {
    LockGuard guard(lock_);
    if (!first_) {
      guard.unlock();
      auto* const region = new Region;
      guard.lock();
      link(*region);
      freeCount_ += Region::pageCount;
    }
    Region& region = *first_;
    Page* const page = region.firstFree;
    region.firstFree = page->next;
    --freeCount_;
    if (--region.freeCount == 0) unlink(region);
    return page;
  }

  void put(Page* page) noexcept {
    page->freed.store(0, std::memory_order_relaxed);
    Region& region = *page->region;
    {
      const LockGuard guard(lock_);
      page->next = std::exchange(region.firstFree, page);
      ++freeCount_;
      if (++region.freeCount == 1) link(region);
      if (region.freeCount < Region::pageCount || freeCount_ <= maxFreePages) return;
      unlink(region);
      freeCount_ -= Region::pageCount;
    }
    delete &region;
  }

 private:
  static constexpr std::size_t maxFreePages = 4096;

  void link(Region& region) noexcept ZEB_REQUIRES(lock_) {
    region.next = std::exchange(first_, &region);
    if (region.next) region.next->previous = &region;
  }
  void unlink(Region& region) noexcept ZEB_REQUIRES(lock_) {
    (region.previous ? region.previous->next : first_) = region.next;
    if (region.next) region.next->previous = region.previous;
    region.previous = region.next = nullptr;
  }

  Lock lock_;
  Region* first_ ZEB_GUARDED_BY(lock_) = nullptr;  ///< of the regions with free pages
  std::size_t freeCount_ ZEB_GUARDED_BY(lock_) = 0;
};

void addFreed(Page& page, std::uint32_t count) noexcept {
  if (page.freed.fetch_add(count, std::memory_order_acq_rel) + count == blocksPerPage) {
    PagePool::shared().put(&page);
  }
}

/// The pages that a thread uses at the moment.
struct ThreadPages {
  Page* source = nullptr;  ///< of new blocks
  std::uint32_t used = blocksPerPage;
  Page* freeing = nullptr;  ///< the page of the last freed blocks; `freed` is not in its count yet
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
  /// Makes sure that this object exists: thread-local objects are made when they are first used.
  void use() noexcept {}
};
thread_local AtThreadEnd atThreadEnd;

void* allocateFromNewPage() {
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

void freeInOtherPage(Page& page) noexcept {
  if (pages.isOver) return addFreed(page, 1);
  atThreadEnd.use();
  if (pages.freeing) addFreed(*pages.freeing, pages.freed);
  pages.freeing = &page;
  pages.freed = 1;
}

}  // namespace

void* WorkItemMemory::allocate() {
  if (!reusesMemory) return ::operator new(blockSize);
  if (pages.used == blocksPerPage || pages.isOver) return allocateFromNewPage();
  return pages.source->block(pages.used++);
}

void WorkItemMemory::free(void* block) noexcept {
  if (!reusesMemory) return ::operator delete(block);
  Page& page = Page::of(block);
  if (&page != pages.freeing || pages.isOver) return freeInOtherPage(page);
  ++pages.freed;
}

}  // namespace zeb::detail
