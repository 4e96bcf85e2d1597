#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/ValueStorage.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>
#include <stdexcept>

namespace zeb::detail {

/// A new heap string of `length` units, which the caller must write at once, after the header.
template <class Unit>
StringStorage* newStringStorage(std::size_t length) {
  if (length > (std::numeric_limits<std::uint32_t>::max)())
    throw std::length_error("string too long");
  void* memory = std::malloc(sizeof(StringStorage) + length * sizeof(Unit));
  if (!memory) throw std::bad_alloc();
  return new (memory)
      StringStorage(sizeof(Unit) == 2 ? StorageWide : 0, static_cast<std::uint32_t>(length));
}

template <class Unit>
Unit* contentOf(StringStorage* string) noexcept {
  return reinterpret_cast<Unit*>(string + 1);
}

/// Takes over the only reference to `string`.
inline NSString adoptString(StringStorage* string) noexcept {
  NSString result;
  // Moved in, because converting the value would count a reference up and down again.
  static_cast<Value&>(result) = Value(Value::adoptStorage, string);
  return result;
}

}  // namespace zeb::detail
