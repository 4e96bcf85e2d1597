#pragma once

// The module Linux: the system: clock, console, threads, files.

#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Linux/Console.h>
#include <ZEBPlatform/Linux/DynamicLoader.h>
#include <ZEBPlatform/Linux/EventDescriptor.h>
#include <ZEBPlatform/Linux/FileReading.h>
#include <ZEBPlatform/Linux/FileTrust.h>
#include <ZEBPlatform/Linux/InterruptibleSleep.h>
#include <ZEBPlatform/Linux/MemoryPages.h>
#include <ZEBPlatform/Linux/PollSet.h>
#include <ZEBPlatform/Linux/ProcessFacts.h>
#include <ZEBPlatform/Linux/Random.h>
#include <ZEBPlatform/Linux/Stack.h>
#include <ZEBPlatform/Linux/Thread.h>
#include <ZEBPlatform/Linux/ThreadState.h>
#include <ZEBPlatform/Linux/TimerDescriptor.h>
