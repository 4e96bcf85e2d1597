#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBUtilities/Coding/ZEBEncodable.h>

namespace zeb {

/// Writes a graph of encodable objects as one JSON document, which `ZEBUnarchiver` reads back. Has
/// no state; may be used from any thread if the objects allow it.
///
/// Numbers and records are read back bit for bit. Dates may change in their last bits, because
/// documents count seconds from 1970. The document is a tree: an object that occurs twice is
/// written twice, and a cycle of objects ends with the error for deep nesting. A value that cannot
/// be archived (null, sets, URLs, other objects) and a dictionary key that is neither a string nor
/// an integer are programming errors, which stop the process.
class ZEBArchiver {
 public:
  /// The document, as UTF-8. Throws NSError when the objects are nested too deeply (more than 512
  /// levels of JSON, or with less than 64 KiB of the thread's stack left), and whatever the
  /// objects' own encoding throws.
  ///
  /// The document is the root object's dictionary, so that the root must be an object. Nil and all
  /// primitives give an empty document, `{}`, which no unarchiver accepts. This includes primitives
  /// that are written as dictionaries inside documents, such as doubles and dates. Arrays and
  /// dictionaries are not encodable and cannot be roots; put them into an object.
  [[nodiscard]] NSData archivedData(const ZEBEncodable& rootObject) const;
  [[nodiscard]] NSData archivedData(const Ref<ZEBObjCEncodable>& rootObject) const;
  /// The same, without copying the object first.
  template <ZEBEncodableType T>
  [[nodiscard]] NSData archivedData(const T& rootObject) const {
    return archivedValue(encodableValue(rootObject));
  }

 private:
  static NSData archivedValue(const Value& root);
};

}  // namespace zeb
