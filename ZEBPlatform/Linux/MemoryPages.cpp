#include <ZEBPlatform/Linux/detail/MemoryPages.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

namespace zeb {

void discardPages(void* bytes, std::size_t size) noexcept {
  static const auto pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto begin = reinterpret_cast<std::uintptr_t>(bytes);
  const std::uintptr_t firstPage = (begin + pageSize - 1) / pageSize * pageSize;
  const std::uintptr_t endOfPages = (begin + size) / pageSize * pageSize;
  // It fails only for locked memory, which the system must not take away.
  if (firstPage < endOfPages) {
    madvise(reinterpret_cast<void*>(firstPage), endOfPages - firstPage, MADV_DONTNEED);
  }
}

}  // namespace zeb
