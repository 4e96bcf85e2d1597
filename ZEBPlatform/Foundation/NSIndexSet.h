#pragma once

#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/Ref.h>

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <span>
#include <string>

namespace zeb {

/// Immutable set of indexes, kept as ranges, so that it takes little memory for runs of indexes. A
/// nullable shared handle; any thread.
///
/// Indexes are below NSNotFound; others throw NSException (NSRangeException). On nil, queries
/// answer as on an empty set.
class NSIndexSet {
 public:
  NSIndexSet() noexcept = default;
  NSIndexSet(std::nullptr_t) noexcept {}
  NSIndexSet(std::initializer_list<std::size_t> indexes)
      : NSIndexSet(indexSetWithIndexes(std::span(indexes.begin(), indexes.size()))) {}

  static NSIndexSet indexSet() { return indexSetWithIndexesInRange({}); }
  static NSIndexSet indexSetWithIndex(std::size_t index) {
    return indexSetWithIndexesInRange({index, 1});
  }
  static NSIndexSet indexSetWithIndexesInRange(NSRange range);
  /// In any order, also several times. Linear if they are in ascending order.
  static NSIndexSet indexSetWithIndexes(std::span<const std::size_t> indexes);

  bool isNil() const noexcept { return !contents_; }
  explicit operator bool() const noexcept { return !isNil(); }

  std::size_t count() const noexcept;
  bool containsIndex(std::size_t index) const noexcept;
  /// NSNotFound if there is no index.
  std::size_t firstIndex() const noexcept;
  std::size_t lastIndex() const noexcept;
  /// In ascending order, none of them empty, with gaps between them. Valid as long as the set.
  std::span<const NSRange> ranges() const noexcept;

  /// The set as a value, for collections and dynamic calls, and back (nil if the value does not
  /// hold one).
  operator Value() const;
  static NSIndexSet from(const Value& value) noexcept;

  /// The same indexes; nil equals only nil.
  friend bool operator==(const NSIndexSet& left, const NSIndexSet& right) noexcept;

 private:
  class Contents;
  explicit NSIndexSet(Ref<NSObject> contents) noexcept;
  const Contents* contents() const noexcept;

  Ref<NSObject> contents_;  ///< always a `Contents`
};

}  // namespace zeb
