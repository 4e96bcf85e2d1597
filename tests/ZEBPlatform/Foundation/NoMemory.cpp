#include "NoMemory.h"

#include <cstdlib>
#include <new>

namespace zeb::test {

namespace {

thread_local bool newFails = false;

}  // namespace

NoMemory::NoMemory() noexcept { newFails = true; }
NoMemory::~NoMemory() { newFails = false; }

}  // namespace zeb::test

void* operator new(std::size_t size) {
  void* memory = zeb::test::newFails ? nullptr : std::malloc(size);
  if (!memory) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
