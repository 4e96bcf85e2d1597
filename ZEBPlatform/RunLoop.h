#pragma once

// The module RunLoop: run loops, timers, sources and threads.

#include <ZEBPlatform/RunLoop/NSPort.h>
#include <ZEBPlatform/RunLoop/NSRunLoop.h>
#include <ZEBPlatform/RunLoop/NSThread.h>
#include <ZEBPlatform/RunLoop/NSTimer.h>
#include <ZEBPlatform/RunLoop/RunLoopDescriptorSource.h>
#include <ZEBPlatform/RunLoop/RunLoopItem.h>
#include <ZEBPlatform/RunLoop/RunLoopMode.h>
#include <ZEBPlatform/RunLoop/RunLoopObserver.h>
#include <ZEBPlatform/RunLoop/RunLoopSource.h>
