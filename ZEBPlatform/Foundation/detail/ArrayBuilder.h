#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>

#include <cstddef>
#include <new>
#include <span>
#include <utility>

namespace zeb::detail {

/// Builds an immutable array element by element, in the memory that the array then has.
class ArrayBuilder {
 public:
  /// With room for `capacity` elements. Throws std::bad_alloc or std::length_error.
  explicit ArrayBuilder(std::size_t capacity);
  ArrayBuilder(const ArrayBuilder&) = delete;
  ArrayBuilder& operator=(const ArrayBuilder&) = delete;
  ~ArrayBuilder() {
    if (array_) destroyStorage(array_);
  }

  /// The element must not be nil.
  void append(Value element) {
    if (array_->count == capacity_) [[unlikely]]
      grow(std::size_t{capacity_} + 1);
    new (&array_->values()[array_->count]) Value(std::move(element));
    ++array_->count;
  }
  void appendUnlessNil(Value element) {
    if (!element.isNil()) append(std::move(element));
  }
  void append(std::span<const Value> elements);

  std::span<const Value> elements() const noexcept { return {array_->values(), array_->count}; }

  /// The array, without the unused room. The builder must not be used afterwards.
  NSArray finish() noexcept;

 private:
  void grow(std::size_t needed);

  ArrayStorage* array_;
  std::uint32_t capacity_;
};

}  // namespace zeb::detail
