#pragma once

// The module Callbacks: dispatchers of callbacks and of observed changes, deallocation hooks, weak
// boxes.

#include <ZEBUtilities/Callbacks/ZEBCallbackDispatcher.h>
#include <ZEBUtilities/Callbacks/ZEBDeallocHook.h>
#include <ZEBUtilities/Callbacks/ZEBKVODispatcher.h>
#include <ZEBUtilities/Callbacks/ZEBWeakValueObject.h>
