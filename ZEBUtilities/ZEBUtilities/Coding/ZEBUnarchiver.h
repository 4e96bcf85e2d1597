#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBUtilities/Coding/DecodingBuilderRegistry.h>
#include <ZEBUtilities/Coding/ZEBDecodedValue.h>

#include <utility>

namespace zeb {

/// Reads documents that `ZEBArchiver` wrote. Finds the builder of each object by its encodable name
/// in a registry, which must not change meanwhile. May be used from any thread.
class ZEBUnarchiver {
 public:
  /// With a nil registry, all names are unknown.
  explicit ZEBUnarchiver(Ref<DecodingBuilderRegistry> decodingBuilderRegistry);

  /// The document's root object as a `T`: a decodable type, a `ZEBEncodable`, a `Ref` to an
  /// object's class, or a `Value` for objects of any type. Throws NSError when the data is not JSON
  /// (nil is not), `ZEBUnarchiverError` when it is no readable archive (`missingRootObject` when
  /// the root is no `T`), and whatever the builders throw. A document with the dictionary of a
  /// value that is no object, such as an array or a date, which no archiver writes, gives that
  /// value. The result shares no memory with the document.
  template <class T>
  [[nodiscard]] T unarchivedRootObject(const NSData& data) const {
    std::optional<T> object = decodedValueAs<T>(unarchivedRoot(data));
    if (!object) throw ZEBUnarchiverError::missingRootObject();
    return std::move(*object);
  }

 private:
  Value unarchivedRoot(const NSData& data) const;

  Ref<DecodingBuilderRegistry> decodingBuilderRegistry_;
};

}  // namespace zeb
