#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb {

/// The JSON document with line breaks and indentation, for diagnostics; nil if the data is not
/// JSON. Parses on the calling thread, without the guards of `ZEBJSONSerialization`.
NSData zeb_prettyPrintedJSONData(const NSData& data);
NSString zeb_prettyPrintedJSONString(const NSData& data);

}  // namespace zeb
