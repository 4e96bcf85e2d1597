#pragma once

#include <ZEBPlatform/Bundle/PropertyListReadersPrivate.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstddef>
#include <vector>

namespace zeb::detail {

/// Builds the tree of a property list from its parts in the document's order, and enforces the
/// limits of depth and number that both forms share. Keeps the first fault, and builds nothing
/// after it.
class PropertyListBuilder {
 public:
  PropertyListBuilder(std::size_t maxValues, bool keepsMutable) noexcept
      : maxValues_(maxValues), keepsMutable_(keepsMutable) {}

  void openArray();
  void openDictionary();
  /// The key of the value that comes next in the open dictionary.
  void setKey(NSString key);
  /// Adds a complete value to the open collection, or as the root.
  void add(Value value);
  void closeCollection();

  void fail(const char* fault) noexcept {
    if (!fault_) fault_ = fault;
  }
  bool hasFault() const noexcept { return fault_ != nullptr; }
  /// Whether a collection is open, and whether it is a dictionary.
  bool isInCollection() const noexcept { return !open_.empty(); }
  bool isInDictionary() const noexcept;

  /// The tree, or the fault.
  PropertyListReading finish();

 private:
  struct Collection {
    Value value;
    NSString key;  ///< the key whose value comes next; nil while there is none
  };

  void open(Value collection);
  /// Whether the document may contain one more value at this point; else a fault is set.
  bool canTakeValue() noexcept;
  void store(Value value);

  const std::size_t maxValues_;
  const bool keepsMutable_;
  std::size_t values_ = 0;
  std::vector<Collection> open_;
  Value root_;
  const char* fault_ = nullptr;
};

}  // namespace zeb::detail
