#pragma once

// The module Device: the machine's model, system controls, memory.

#include <ZEBUtilities/Device/NSProcessInfo+ZEBAdditions.h>
#include <ZEBUtilities/Device/ZEBDevicePlatform.h>
#include <ZEBUtilities/Device/ZEBOperatingSystem.h>
#include <ZEBUtilities/Device/ZEBSystemControl.h>
