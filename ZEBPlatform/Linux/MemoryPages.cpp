#include <ZEBPlatform/Linux/detail/MemoryPages.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace zeb {

namespace {

/// Gives the system advice about all whole pages within these bytes. It may ignore the advice.
void advise(void* bytes, std::size_t size, int advice) noexcept {
  static const auto pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto begin = reinterpret_cast<std::uintptr_t>(bytes);
  const std::uintptr_t firstPage = (begin + pageSize - 1) / pageSize * pageSize;
  const std::uintptr_t endOfPages = (begin + size) / pageSize * pageSize;
  if (firstPage < endOfPages) {
    madvise(reinterpret_cast<void*>(firstPage), endOfPages - firstPage, advice);
  }
}

}  // namespace

// It fails only for locked memory, which the system must not take away.
void discardPages(void* bytes, std::size_t size) noexcept { advise(bytes, size, MADV_DONTNEED); }

void preferLargePages(void* bytes, std::size_t size) noexcept {
  constexpr std::size_t minSize = std::size_t{4} << 20;  // two of the usual large pages
  if (size >= minSize) advise(bytes, size, MADV_HUGEPAGE);
}

}  // namespace zeb
