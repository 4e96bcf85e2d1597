#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBUtilities/Coding/DecodingBuilderRegistry.h>
#include <ZEBUtilities/Coding/ZEBDecodedValue.h>

#include <utility>

namespace zeb {

/// Reads documents that `ZEBArchiver` wrote, finding the code for each object by its encodable name in a
/// registry, which must not change meanwhile. Any thread.
class ZEBUnarchiver {
 public:
  /// With nil no name is known.
  explicit ZEBUnarchiver(Ref<DecodingBuilderRegistry> decodingBuilderRegistry);

  /// The document's root object as a `T` (a decodable type, a `ZEBEncodable`, a `Ref` to an object's
  /// class, or a `Value` for whatever it is). Throws NSError when the data is no JSON, `ZEBUnarchiverError`
  /// when it is no readable archive (`missingRootObject` when the root is no `T`), and whatever the
  /// builders throw. Nil data is no JSON. A document that is not an object's
  /// dictionary but that of another value, such as an array or a date, which no archiver writes, gives that
  /// value. What it answers shares no memory with the document.
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
