#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/KeyedCoding/NSCoder.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>

#include <concepts>

namespace zeb {

/// Writes one object with its integers, strings and arrays of strings as data. For trees of objects
/// use the archives of the module Coding.
class NSKeyedArchiver final : public NSCoder {
 public:
  /// The object's class and what its `encodeWithCoder` writes. Nil for a nil object.
  template <std::derived_from<NSObject> T>
    requires std::derived_from<T, NSSecureCoding>
  static NSData archivedDataWithRootObject(const Ref<T>& object) {
    return object ? archivedData(*object, *object) : nullptr;
  }

  void encodeInteger(std::int64_t value, const NSString& key) override;
  void encodeInt32(std::int32_t value, const NSString& key) override;
  void encodeObject(const NSString& string, const NSString& key) override;
  void encodeObject(const NSArray& strings, const NSString& key) override;

 private:
  static NSData archivedData(const NSObject& object, const NSSecureCoding& coding);
  void encode(const Value& value, const NSString& key);

  NSMutableDictionary fields_;
};

}  // namespace zeb
