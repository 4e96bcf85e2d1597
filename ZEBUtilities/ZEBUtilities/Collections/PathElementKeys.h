#pragma once

#include <ZEBPlatform/Foundation/DictionaryKey.h>

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <ranges>

namespace zeb {

/// The keys that lead through nested dictionaries, from the outermost one inwards. Borrowed for the
/// duration of one call.
///
/// Made of keys in braces, `{"user", name, Value(5)}`, or of any contiguous range of texts or
/// values: an `NSArray`, a `std::vector<std::string>`. A nil array is an empty path.
class PathElementKeys {
 public:
  PathElementKeys(std::initializer_list<DictionaryKey> keys) noexcept
      : PathElementKeys(keys.begin(), keys.size()) {}
  PathElementKeys(std::nullptr_t) noexcept
      : PathElementKeys(static_cast<const DictionaryKey*>(nullptr), 0) {}
  template <std::ranges::contiguous_range Keys>
    requires std::convertible_to<std::ranges::range_reference_t<const Keys&>, DictionaryKey>
  PathElementKeys(const Keys& keys) noexcept
      : PathElementKeys(std::ranges::data(keys), std::ranges::size(keys)) {}

  std::size_t count() const noexcept { return count_; }
  DictionaryKey operator[](std::size_t index) const noexcept { return keyAt_(keys_, index); }

 private:
  template <class Key>
  PathElementKeys(const Key* keys, std::size_t count) noexcept
      : keys_(keys), count_(count), keyAt_([](const void* first, std::size_t index) noexcept {
          return DictionaryKey(static_cast<const Key*>(first)[index]);
        }) {}

  const void* keys_;
  std::size_t count_;
  DictionaryKey (*keyAt_)(const void* keys, std::size_t index) noexcept;
};

}  // namespace zeb
