#pragma once

// The module Runtime: classes and selectors, properties by name, key-value observing.

#include <ZEBPlatform/Runtime/BlockConversion.h>
#include <ZEBPlatform/Runtime/BorrowedPointerConversion.h>
#include <ZEBPlatform/Runtime/Class.h>
#include <ZEBPlatform/Runtime/ErrorConversion.h>
#include <ZEBPlatform/Runtime/KeyValueChange.h>
#include <ZEBPlatform/Runtime/MethodBody.h>
#include <ZEBPlatform/Runtime/NSAssertionHandler.h>
#include <ZEBPlatform/Runtime/NSKeyValueCoding.h>
#include <ZEBPlatform/Runtime/NSKeyValueObserving.h>
#include <ZEBPlatform/Runtime/ObservedChange.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBPlatform/Runtime/SEL.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBPlatform/Runtime/ValueConversion.h>
