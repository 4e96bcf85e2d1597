#include <Foundation/DataStorage.h>
#include <Foundation/DictionaryEntry.h>
#include <Foundation/HashTable.h>
#include <Foundation/URLStorage.h>
#include <Foundation/ValueStorage.h>

#include <cstdlib>
#include <vector>

namespace zeb::detail {

namespace {

void destroyArray(ArrayStorage* array) noexcept {
  Value* values = array->values();
  for (std::uint32_t index = 0; index < array->count; ++index) values[index].~Value();
  if (array->flags & StorageIndirect) std::free(values);
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
      removeAllEntries(*static_cast<DictionaryStorage*>(storage));
      std::free(storage);
      return;
    default:
      return;
  }
}

/// What died while something else was being destroyed on this thread.
thread_local std::vector<Storage*>* waiting = nullptr;

}  // namespace

// A tree dies without recursion, however deep it is: what its destruction releases last waits here.
void destroyStorage(Storage* storage) noexcept {
  if (storage->kind == ValueKind::String) return destroyNow(storage);
  if (waiting) {
    waiting->push_back(storage);
    return;
  }
  std::vector<Storage*> list;
  waiting = &list;
  destroyNow(storage);
  while (!list.empty()) {
    Storage* next = list.back();
    list.pop_back();
    destroyNow(next);
  }
  waiting = nullptr;
}

}  // namespace zeb::detail
