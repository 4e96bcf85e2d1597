#pragma once

// The module Callbacks: callback and key-value-observing dispatchers, deallocation hooks, weak boxes.

#include <ZEBUtilities/Callbacks/ZEBCallbackDispatcher.h>
#include <ZEBUtilities/Callbacks/ZEBDeallocHook.h>
#include <ZEBUtilities/Callbacks/ZEBKVODispatcher.h>
#include <ZEBUtilities/Callbacks/ZEBWeakValueObject.h>
