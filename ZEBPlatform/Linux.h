#pragma once

// The module Linux: the system: clock, console, threads, files.

#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Linux/DynamicLoader.h>
#include <ZEBPlatform/Linux/SystemControl.h>
