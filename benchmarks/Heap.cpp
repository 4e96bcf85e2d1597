#include "Heap.h"

#include <malloc.h>

#include <cerrno>

// glibc calls the program's own allocation functions if it defines them; glibc's own functions have
// these names. While nothing is counted, a call costs one more branch, for us and for the peers.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}

namespace {

bool isCounting = false;
std::ptrdiff_t liveBytes = 0;

void* counted(void* block) {
  if (isCounting) [[unlikely]]
    liveBytes += static_cast<std::ptrdiff_t>(malloc_usable_size(block));
  return block;
}

void uncount(void* block) {
  if (isCounting) [[unlikely]]
    liveBytes -= static_cast<std::ptrdiff_t>(malloc_usable_size(block));
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept { return counted(__libc_malloc(size)); }
void* calloc(std::size_t count, std::size_t size) noexcept {
  return counted(__libc_calloc(count, size));
}
void* realloc(void* block, std::size_t size) noexcept {
  uncount(block);
  return counted(__libc_realloc(block, size));
}
void* memalign(std::size_t alignment, std::size_t size) noexcept {
  return counted(__libc_memalign(alignment, size));
}
void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
  return counted(__libc_memalign(alignment, size));
}
int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
  *block = counted(__libc_memalign(alignment, size));
  return *block ? 0 : ENOMEM;
}
void free(void* block) noexcept {
  uncount(block);
  __libc_free(block);
}

}  // extern "C"

namespace zeb::bench {

std::ptrdiff_t heapGrowth(const std::function<void()>& work) {
  liveBytes = 0;
  isCounting = true;
  work();
  isCounting = false;
  return liveBytes;
}

}  // namespace zeb::bench
