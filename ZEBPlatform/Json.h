#pragma once

// The module Json: reading and writing JSON.

#include <ZEBPlatform/Json/JsonTextWriter.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>
