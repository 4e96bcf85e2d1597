#include "NoMemory.h"

#include <cstdlib>
#include <new>

constinit thread_local bool zeb::test::NoMemory::newFails = false;

void* operator new(std::size_t size) {
  void* memory = zeb::test::NoMemory::newFails ? nullptr : std::malloc(size);
  if (!memory) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
