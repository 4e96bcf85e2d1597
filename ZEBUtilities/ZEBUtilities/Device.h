#pragma once

// The module Device: the machine's model, system controls, memory, the stacks of threads.

#include <ZEBUtilities/Device/NSProcessInfo+ZEBAdditions.h>
#include <ZEBUtilities/Device/NSThread+ZEBTraceSampler.h>
#include <ZEBUtilities/Device/ZEBDevicePlatform.h>
#include <ZEBUtilities/Device/ZEBOperatingSystem.h>
#include <ZEBUtilities/Device/ZEBStackTraceSampler.h>
#include <ZEBUtilities/Device/ZEBSystemControl.h>
