#pragma once

#include <ZEBPlatform/Foundation/Value.h>

#include <string>
#include <string_view>

namespace zeb::detail {

/// A property list that was read, or what is wrong with it.
struct PropertyListReading {
  Value value;        ///< nil when there is a fault
  std::string fault;  ///< a clause about the document, such as "it is cut short"
};

PropertyListReading readXMLPropertyList(std::string_view document, bool keepsMutable);
/// Expects a document that begins with "bplist00".
PropertyListReading readBinaryPropertyList(std::string_view document, bool keepsMutable);

}  // namespace zeb::detail
