#pragma once

#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Json/JsonStructurePrivate.h>

#include <string_view>

namespace zeb::detail {

struct JsonReading {
  Value value;  ///< nil when there was a fault
  JsonFault fault;
};

/// Builds the immutable tree of a JSON text given as UTF-8 without byte-order mark. The tree's
/// collections and strings share one arena. With `permitFragments` the root may be neither array
/// nor dictionary.
JsonReading readJson(std::string_view utf8, bool permitFragments);

}  // namespace zeb::detail
