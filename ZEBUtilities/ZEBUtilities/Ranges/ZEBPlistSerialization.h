#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>

namespace zeb {

/// A protocol of objects that have a form as a property-list dictionary. A class that can also be
/// read from one has the function `static Ref<T> initWithPlistDictionary(const NSDictionary&)`.
class ZEBPlistSerialization {
 public:
  /// Holds property-list kinds only.
  virtual NSDictionary plistDictionaryValue() const = 0;

 protected:
  ~ZEBPlistSerialization() = default;
};

}  // namespace zeb
