#pragma once

// The module Tasks: dedicated threads, deferred and background work, operations.

#include <ZEBUtilities/Tasks/OperationDependencyGraph.h>
#include <ZEBUtilities/Tasks/ZEBBackgroundQueue.h>
#include <ZEBUtilities/Tasks/ZEBBackgroundTaskHandle.h>
#include <ZEBUtilities/Tasks/ZEBMainThreadRunLoopDeferredTask.h>
#include <ZEBUtilities/Tasks/ZEBSafeOperation.h>
#include <ZEBUtilities/Tasks/ZEBThread.h>
