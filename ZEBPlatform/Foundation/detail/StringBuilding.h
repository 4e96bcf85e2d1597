#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/ValueStorage.h>

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <new>
#include <stdexcept>

namespace zeb::detail {

template <class Unit>
Unit* contentOf(StringStorage* string) noexcept {
  return reinterpret_cast<Unit*>(string + 1);
}

/// A new heap string. `fill` writes up to `maxLength` units to the pointer that it is given and
/// returns their number; the memory after them is given back.
template <class Unit, class Fill>
StringStorage* newFilledString(std::size_t maxLength, const Fill& fill) {
  void* memory = std::malloc(sizeof(StringStorage) + maxLength * sizeof(Unit));
  if (!memory) throw std::bad_alloc();
  const std::size_t length = fill(contentOf<Unit>(static_cast<StringStorage*>(memory)));
  if (length > (std::numeric_limits<std::uint32_t>::max)()) {
    std::free(memory);
    throw std::length_error("string too long");
  }
  if (length < maxLength) {
    void* fitting = std::realloc(memory, sizeof(StringStorage) + length * sizeof(Unit));
    if (fitting) memory = fitting;
  }
  return new (memory)
      StringStorage(sizeof(Unit) == 2 ? StorageWide : 0, static_cast<std::uint32_t>(length));
}

/// A new heap string of `length` units, which the caller must write at once, after the header.
template <class Unit>
StringStorage* newStringStorage(std::size_t length) {
  if (length > (std::numeric_limits<std::uint32_t>::max)())
    throw std::length_error("string too long");
  return newFilledString<Unit>(length, [&](Unit*) { return length; });
}

/// Takes over the only reference to `string`.
inline NSString adoptString(StringStorage* string) noexcept {
  NSString result;
  // Moved in, because converting the value would count a reference up and down again.
  static_cast<Value&>(result) = Value(Value::adoptStorage, string);
  return result;
}

}  // namespace zeb::detail
