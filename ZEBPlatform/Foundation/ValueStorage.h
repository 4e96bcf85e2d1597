#pragma once

#include <ZEBPlatform/Foundation/ValueKind.h>
#include <ZEBPlatform/Foundation/detail/StringHash.h>
#include <ZEBPlatform/Memory/FunctionView.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// How values lie in memory. Only for modules of this library that build fast paths on it, such as
/// the JSON reader and writer; applications never use it.
namespace zeb {

class Value;
struct DictionaryEntry;

namespace detail {

class Arena;

enum StorageFlags : std::uint8_t {
  StorageInArena = 1,  ///< lives and dies with its arena; `countOrOffset` leads there
  StorageMutable = 2,
  StorageWide = 4,        ///< string of 16-bit units
  StorageIndirect = 8,    ///< content lies elsewhere; a pointer to it follows the header
  StorageKeyedHash = 16,  ///< dictionary whose index uses the secret hash, because keys collided
  /// Immutable ASCII string known to have no quotes, backslashes and control characters.
  StoragePlainText = 32,
};

/// Header of every counted value that is not an `NSObject`.
struct Storage {
  Storage(ValueKind valueKind, std::uint8_t storageFlags, std::uint32_t count = 1) noexcept
      : countOrOffset(count), kind(valueKind), flags(storageFlags) {}

  std::atomic<std::uint32_t> countOrOffset;
  ValueKind kind;
  std::uint8_t flags;

  bool isMutable() const noexcept { return flags & StorageMutable; }
};

/// Immutable text: `length` units directly after this header, or in the buffer of a mutable string.
struct StringStorage : Storage {
  StringStorage(std::uint8_t storageFlags, std::uint32_t units, std::uint32_t count = 1) noexcept
      : Storage(ValueKind::String, storageFlags, count), length(units) {}

  std::uint32_t length;
  /// 0 until it is computed; racing writers store the same number. Unused by mutable strings.
  mutable std::atomic<std::uint32_t> hash{0};

  bool isWide() const noexcept { return flags & StorageWide; }
  inline const char* ascii() const noexcept;
  inline const char16_t* units() const noexcept;
};

/// A mutable text. `length` and the wide flag of the header follow every change of the content.
struct MutableStringStorage : StringStorage {
  MutableStringStorage() noexcept : StringStorage(StorageMutable | StorageIndirect, 0) {}

  const void* data = "";  ///< of `narrow` or `wide`; must stay the first field
  std::string narrow;     ///< the content while all units are below 128
  std::u16string wide;    ///< the content since one was not
  void contentsChanged() noexcept;
  /// Back to an empty text of bytes.
  void clear() noexcept {
    narrow.clear();
    wide.clear();
    flags &= static_cast<std::uint8_t>(~StorageWide);
    contentsChanged();
  }
};

inline const char* StringStorage::ascii() const noexcept {
  const void* after = this + 1;
  return static_cast<const char*>(flags & StorageIndirect ? *static_cast<const void* const*>(after)
                                                          : after);
}

inline const char16_t* StringStorage::units() const noexcept {
  return reinterpret_cast<const char16_t*>(ascii());
}

/// Elements directly after this header, or in the buffer of a mutable array.
struct ArrayStorage : Storage {
  ArrayStorage(std::uint8_t storageFlags, std::uint32_t elements,
               std::uint32_t references = 1) noexcept
      : Storage(ValueKind::Array, storageFlags, references), count(elements) {}

  std::uint32_t count;
  std::uint32_t capacity = 0;  ///< of a mutable array's buffer

  inline Value* values() const noexcept;
};

struct MutableArrayStorage : ArrayStorage {
  MutableArrayStorage() noexcept : ArrayStorage(StorageMutable | StorageIndirect, 0) {}

  Value* buffer = nullptr;  ///< must stay the first field
  /// Grows with every change of the elements, so that enumerations notice changes.
  std::uint64_t mutations = 0;
  /// Free places before `buffer`, where the allocation begins. Elements that are removed from the
  /// front leave them, so that a queue costs constant time for each element.
  std::uint32_t headroom = 0;
};

inline Value* ArrayStorage::values() const noexcept {
  const void* after = this + 1;
  return static_cast<Value*>(flags & StorageIndirect ? *static_cast<void* const*>(after)
                                                     : const_cast<void*>(after));
}

/// Entries in insertion order, and above a few of them a hash index. Serves dictionaries, and sets
/// and ordered sets, whose entries have no value. The entries of an ordered set have no holes
/// between them, so that an index is a position.
struct DictionaryStorage : Storage {
  DictionaryStorage(ValueKind dictionaryOrSet, std::uint8_t storageFlags,
                    std::uint32_t references = 1) noexcept
      : Storage(dictionaryOrSet, storageFlags, references) {}

  std::uint32_t count = 0;      ///< living entries
  std::uint32_t used = 0;       ///< entries in use, removed ones (nil keys) included
  std::uint32_t capacity = 0;   ///< entries that there is room for
  std::uint32_t indexMask = 0;  ///< slots - 1, or 0 without an index
  DictionaryEntry* entries = nullptr;

  bool hasKeyedHash() const noexcept { return flags & StorageKeyedHash; }
  /// The slots of the index, after the room for entries: each holds the position of an entry + 1,
  /// or 0.
  inline std::uint32_t* index() const noexcept;
};

/// Bytes: its own after the header, foreign ones with a release function, several data one after
/// the other, or the growing buffer of mutable data.
struct DataStorage : Storage {
  DataStorage(std::uint8_t storageFlags, std::size_t size) noexcept
      : Storage(ValueKind::Data, storageFlags), length(size) {}

  std::size_t length;
  const std::byte* bytes = nullptr;  ///< null while the parts have not been joined
};

/// Called by the release of the last reference.
void destroyStorage(Storage* storage) noexcept;

void retainArenaOf(const Storage& storage) noexcept;
void releaseArenaOf(const Storage& storage) noexcept;

inline void retainStorage(Storage* storage) noexcept {
  if (storage->flags & StorageInArena) {
    retainArenaOf(*storage);
  } else {
    storage->countOrOffset.fetch_add(1, std::memory_order_relaxed);
  }
}

inline void releaseStorage(Storage* storage) noexcept {
  if (storage->flags & StorageInArena) {
    releaseArenaOf(*storage);
    // When the caller's reference is the only one, no other thread can add one, so that counting
    // down, which costs much more than reading, is not needed.
  } else if (storage->countOrOffset.load(std::memory_order_acquire) == 1 ||
             storage->countOrOffset.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    destroyStorage(storage);
  }
}

std::uint32_t computeHash(const StringStorage& string) noexcept;
/// 32-bit hash of the text, computed once for immutable strings; mutable ones never note theirs.
inline std::uint32_t hashOfString(const StringStorage& string) noexcept {
  const std::uint32_t noted = string.hash.load(std::memory_order_relaxed);
  return noted ? noted : computeHash(string);
}
bool equalStrings(const StringStorage& left, const StringStorage& right) noexcept;

}  // namespace detail
}  // namespace zeb
