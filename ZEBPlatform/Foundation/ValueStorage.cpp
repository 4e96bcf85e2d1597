#include <ZEBPlatform/Foundation/DataStoragePrivate.h>
#include <ZEBPlatform/Foundation/DictionaryEntry.h>
#include <ZEBPlatform/Foundation/ValueStorage.h>
#include <ZEBPlatform/Foundation/detail/HashTable.h>
#include <ZEBPlatform/Foundation/detail/URLStorage.h>

#include <cstdlib>

namespace zeb::detail {

namespace {

void destroyArray(ArrayStorage* array) noexcept {
  Value* values = array->values();
  for (std::uint32_t index = 0; index < array->count; ++index) values[index].~Value();
  if (array->flags & StorageIndirect) {
    if (values) std::free(values - static_cast<MutableArrayStorage*>(array)->headroom);
  }
  std::free(array);
}

void destroyNow(Storage* storage) noexcept {
  switch (storage->kind) {
    case ValueKind::String:
      if (storage->flags & StorageIndirect) {
        delete static_cast<MutableStringStorage*>(storage);
      } else {
        std::free(storage);
      }
      return;
    case ValueKind::Data:
      destroyData(static_cast<DataStorage*>(storage));
      return;
    case ValueKind::URL:
      delete static_cast<URLStorage*>(storage);
      return;
    case ValueKind::Array:
      destroyArray(static_cast<ArrayStorage*>(storage));
      return;
    case ValueKind::Dictionary:
    case ValueKind::Set:
    case ValueKind::OrderedSet:
      removeAllEntries(*static_cast<DictionaryStorage*>(storage));
      std::free(storage);
      return;
    default:
      return;
  }
}

/// A field that the destruction of a collection does not need: it holds the upper half of a link.
std::uint32_t& spareField(Storage& collection) noexcept {
  if (collection.kind == ValueKind::Array) return static_cast<ArrayStorage&>(collection).capacity;
  return static_cast<DictionaryStorage&>(collection).capacity;
}

/// Storages without references, linked through their own fields, so that the list needs no memory.
class DyingStorages {
 public:
  void push(Storage& storage) noexcept {
    if (storage.kind == ValueKind::Data) {
      static_cast<DataStorage&>(storage).bytes = reinterpret_cast<const std::byte*>(first_);
    } else {
      const std::uint64_t next = reinterpret_cast<std::uintptr_t>(first_);
      storage.countOrOffset.store(static_cast<std::uint32_t>(next), std::memory_order_relaxed);
      spareField(storage) = static_cast<std::uint32_t>(next >> 32);
    }
    first_ = &storage;
  }

  /// Null when the list is empty.
  Storage* pop() noexcept {
    Storage* const storage = first_;
    if (!storage) return nullptr;
    if (storage->kind == ValueKind::Data) {
      const std::byte* next = static_cast<DataStorage*>(storage)->bytes;
      first_ = reinterpret_cast<Storage*>(const_cast<std::byte*>(next));
    } else {
      const std::uint64_t lower = storage->countOrOffset.load(std::memory_order_relaxed);
      const std::uint64_t next = std::uint64_t{spareField(*storage)} << 32 | lower;
      first_ = reinterpret_cast<Storage*>(static_cast<std::uintptr_t>(next));
    }
    return storage;
  }

 private:
  Storage* first_ = nullptr;
};

/// Storages whose last reference went while another one was being destroyed on this thread.
thread_local DyingStorages waiting;
thread_local bool isDestroying = false;

}  // namespace

// A tree is destroyed without recursion, however deep it is, and without taking memory: storages
// that the destruction of another one releases last wait in a list.
void destroyStorage(Storage* storage) noexcept {
  // These own no values, so destroying them does not recurse.
  const bool isPlainData = storage->kind == ValueKind::Data && !(storage->flags & StorageIndirect);
  if (storage->kind == ValueKind::String || storage->kind == ValueKind::URL || isPlainData) {
    return destroyNow(storage);
  }
  if (isDestroying) return waiting.push(*storage);
  isDestroying = true;
  destroyNow(storage);
  while (Storage* next = waiting.pop()) destroyNow(next);
  isDestroying = false;
}

}  // namespace zeb::detail
