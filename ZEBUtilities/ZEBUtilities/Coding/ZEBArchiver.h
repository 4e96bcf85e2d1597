#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBUtilities/Coding/ZEBEncodable.h>

namespace zeb {

/// Writes a graph of encodable objects as one JSON document, which `ZEBUnarchiver` reads back. Holds
/// nothing between calls; any thread, as far as the objects allow it.
///
/// Numbers, dates and records come back bit for bit, but for dates' last bits: documents count them
/// from 1970. The document holds trees: an object that is met twice is written twice, and a cycle ends
/// in the error for too deep nesting. A value that can't be archived (null, sets, URLs, other objects)
/// and a dictionary key that is neither a string nor an integer are programming errors that stop the
/// process.
class ZEBArchiver {
 public:
  /// The document, as UTF-8. Throws NSError when the objects are nested too deeply (512 levels of JSON,
  /// or what the stack bears), and whatever the objects' own encoding throws.
  ///
  /// The document is the root object's own dictionary, so that the root must be an object. Every other
  /// root gives an empty document, `{}`, which no unarchiver takes: nil, and all primitives alike, also
  /// those that have a dictionary of their own inside of documents, such as doubles and dates. Arrays and
  /// dictionaries are no encodables and can't be roots; put them into an object.
  [[nodiscard]] NSData archivedData(const ZEBEncodable& rootObject) const;
  [[nodiscard]] NSData archivedData(const Ref<ZEBObjCEncodable>& rootObject) const;
  /// The same without copying the object first.
  template <ZEBEncodableType T>
  [[nodiscard]] NSData archivedData(const T& rootObject) const {
    return archivedValue(encodableValue(rootObject));
  }

 private:
  static NSData archivedValue(const Value& root);
};

}  // namespace zeb
