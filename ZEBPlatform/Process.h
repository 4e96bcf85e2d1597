#pragma once

// The module Process: facts about the process and its machine.

#include <ZEBPlatform/Process/NSProcessInfo.h>
