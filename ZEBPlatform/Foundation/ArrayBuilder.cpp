#include <ZEBPlatform/Foundation/CollectionLimitPrivate.h>
#include <ZEBPlatform/Foundation/detail/ArrayBuilder.h>
#include <ZEBPlatform/Linux/detail/MemoryPages.h>

#include <cstdlib>
#include <memory>

namespace zeb::detail {

namespace {

constexpr std::size_t bytesFor(std::size_t capacity) noexcept {
  return sizeof(ArrayStorage) + capacity * sizeof(Value);
}

}  // namespace

ArrayBuilder::ArrayBuilder(std::size_t capacity) {
  requireCollectionCount(capacity);
  void* memory = std::malloc(bytesFor(capacity));
  if (!memory) throw std::bad_alloc();
  preferLargePages(memory, bytesFor(capacity));
  array_ = new (memory) ArrayStorage(0, 0);
  capacity_ = static_cast<std::uint32_t>(capacity);
}

void ArrayBuilder::append(std::span<const Value> elements) {
  const std::size_t needed = array_->count + elements.size();
  if (needed > capacity_) grow(needed);
  std::uninitialized_copy(elements.begin(), elements.end(), array_->values() + array_->count);
  array_->count = static_cast<std::uint32_t>(needed);
}

// The header and the values are moved by their bytes: no pointers to them exist yet.
void ArrayBuilder::grow(std::size_t needed) {
  const std::size_t capacity = grownCapacity(capacity_, needed);
  void* memory = std::realloc(static_cast<void*>(array_), bytesFor(capacity));
  if (!memory) throw std::bad_alloc();
  array_ = static_cast<ArrayStorage*>(memory);
  capacity_ = static_cast<std::uint32_t>(capacity);
}

NSArray ArrayBuilder::finish() noexcept {
  ArrayStorage* array = std::exchange(array_, nullptr);
  if (array->count < capacity_) {
    void* smaller = std::realloc(static_cast<void*>(array), bytesFor(array->count));
    if (smaller) array = static_cast<ArrayStorage*>(smaller);
  }
  return NSArray(Value(Value::adoptStorage, array));
}

}  // namespace zeb::detail
