#pragma once

// The module Operations: operations and their queues.

#include <ZEBPlatform/Operations/NSBlockOperation.h>
#include <ZEBPlatform/Operations/NSInvocationOperation.h>
#include <ZEBPlatform/Operations/NSOperation.h>
#include <ZEBPlatform/Operations/NSOperationQueue.h>
