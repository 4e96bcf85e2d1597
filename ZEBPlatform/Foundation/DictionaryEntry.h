#pragma once

#include <ZEBPlatform/Foundation/StringKey.h>
#include <ZEBPlatform/Foundation/Value.h>

namespace zeb {

/// A key with its value, as dictionaries keep and enumerate them. Keys are immutable copies.
struct DictionaryEntry {
  Value key;
  Value value;
};

inline std::uint32_t* detail::DictionaryStorage::index() const noexcept {
  return reinterpret_cast<std::uint32_t*>(entries + capacity);
}

}  // namespace zeb
