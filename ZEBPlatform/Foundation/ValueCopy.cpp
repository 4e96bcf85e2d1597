#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSOrderedSet.h>
#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/detail/StringBuilding.h>
#include <ZEBPlatform/Foundation/detail/TreeRebuild.h>

#include <cstring>
#include <string_view>

namespace zeb {

namespace {

/// An immutable copy of a string in memory of its own.
NSString copiedString(const Value& string) {
  const auto& text = *string.storageAs<detail::StringStorage>();
  if (text.isWide()) return NSString(std::u16string_view(text.units(), text.length));
  detail::StringStorage* copy = detail::newStringStorage<char>(text.length);
  std::memcpy(detail::contentOf<char>(copy), text.ascii(), text.length);
  return detail::adoptString(copy);
}

/// An immutable leaf that owns its memory. Only strings and collections are ever made inside the
/// memory of a document.
Value detachedLeaf(const Value& leaf) {
  const bool isInDocument = leaf.isString() && (leaf.storage()->flags & detail::StorageInArena);
  return isInDocument ? copiedString(leaf) : leaf.copy();
}

bool isCollection(const Value& value) noexcept {
  return value.kind() >= ValueKind::Array && value.kind() <= ValueKind::OrderedSet;
}

struct DetachingRules : detail::TreeRules {
  static constexpr int maxKeyNesting = 64;
  int keyNesting = 0;

  Value leaf(const Value& value) const {
    if (!isCollection(value) || keyNesting == maxKeyNesting) return detachedLeaf(value);
    DetachingRules inner;  // a collection that is a key
    inner.keyNesting = keyNesting + 1;
    return detail::rebuildTree(value, inner);
  }
};

}  // namespace

Value Value::copy() const {
  if (!isMutable()) return *this;
  switch (kind()) {
    case Kind::String:
      return copiedString(*this);
    case Kind::Data:
      return NSData::dataWithBytes(NSData(*this).bytes());
    case Kind::Array: {
      const NSArray array(*this);
      return NSArray::arrayWithObjects(std::span(array.begin(), array.count()));
    }
    default:
      return detail::frozen(mutableCopy());
  }
}

Value Value::mutableCopy() const {
  switch (kind()) {
    case Kind::String:
      return NSString(*this).mutableCopy();
    case Kind::Data:
      return NSData(*this).mutableCopy();
    case Kind::Array:
      return NSArray(*this).mutableCopy();
    case Kind::Dictionary:
      return NSDictionary(*this).mutableCopy();
    case Kind::Set:
      return NSSet(*this).mutableCopy();
    case Kind::OrderedSet:
      return NSOrderedSet(*this).mutableCopy();
    default:
      return *this;
  }
}

Value Value::detachedCopy() const {
  return isCollection(*this) ? detail::rebuildTree(*this, DetachingRules()) : detachedLeaf(*this);
}

}  // namespace zeb
