#pragma once

// The module KeyedCoding: single objects as data, field by field.

#include <ZEBPlatform/KeyedCoding/CoderConversion.h>
#include <ZEBPlatform/KeyedCoding/NSCoder.h>
#include <ZEBPlatform/KeyedCoding/NSKeyedArchiver.h>
#include <ZEBPlatform/KeyedCoding/NSKeyedUnarchiver.h>
