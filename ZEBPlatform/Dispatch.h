#pragma once

// The module Dispatch: queues, timer sources, semaphores.

#include <ZEBPlatform/Dispatch/DispatchOnce.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Dispatch/DispatchSemaphore.h>
#include <ZEBPlatform/Dispatch/DispatchSource.h>
#include <ZEBPlatform/Dispatch/DispatchTime.h>
