#pragma once

// The module Timing: launch time, stopwatches and timers.

#include <ZEBUtilities/Timing/ZEBLaunchTime.h>
#include <ZEBUtilities/Timing/ZEBRecordingStopwatch.h>
#include <ZEBUtilities/Timing/ZEBStopwatch.h>
#include <ZEBUtilities/Timing/ZEBTimer.h>
#include <ZEBUtilities/Timing/ZEBTimerAction.h>
