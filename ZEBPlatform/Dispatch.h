#pragma once

// The module Dispatch: queues, timer sources, semaphores.

#include <ZEBPlatform/Dispatch/ConcurrentQueue.h>
#include <ZEBPlatform/Dispatch/DeadlineHeap.h>
#include <ZEBPlatform/Dispatch/DispatchOnce.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Dispatch/DispatchSemaphore.h>
#include <ZEBPlatform/Dispatch/DispatchSource.h>
#include <ZEBPlatform/Dispatch/DispatchTime.h>
#include <ZEBPlatform/Dispatch/DispatchTimers.h>
#include <ZEBPlatform/Dispatch/MainQueue.h>
#include <ZEBPlatform/Dispatch/NilArgument.h>
#include <ZEBPlatform/Dispatch/PooledQueue.h>
#include <ZEBPlatform/Dispatch/QueueFrame.h>
#include <ZEBPlatform/Dispatch/SerialQueue.h>
#include <ZEBPlatform/Dispatch/ThreadGate.h>
#include <ZEBPlatform/Dispatch/ThreadPool.h>
#include <ZEBPlatform/Dispatch/WorkItem.h>
#include <ZEBPlatform/Dispatch/WorkItemMemory.h>
#include <ZEBPlatform/Dispatch/WorkList.h>
