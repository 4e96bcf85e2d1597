#pragma once

// The module Json: reading and writing JSON.

#include <ZEBPlatform/Json/ByteBlock.h>
#include <ZEBPlatform/Json/JsonNumberText.h>
#include <ZEBPlatform/Json/JsonReader.h>
#include <ZEBPlatform/Json/JsonStructure.h>
#include <ZEBPlatform/Json/JsonText.h>
#include <ZEBPlatform/Json/JsonTextWriter.h>
#include <ZEBPlatform/Json/JsonWriter.h>
#include <ZEBPlatform/Json/KeyTable.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>
