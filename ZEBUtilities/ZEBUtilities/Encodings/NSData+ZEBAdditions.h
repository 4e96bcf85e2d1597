#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb {

/// The JSON document laid out for people, nil when the data is none. For diagnostics: parses on
/// whatever thread it is called, without the guards of `ZEBJSONSerialization`.
NSData zeb_prettyPrintedJSONData(const NSData& data);
NSString zeb_prettyPrintedJSONString(const NSData& data);

}  // namespace zeb
