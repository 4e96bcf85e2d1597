#pragma once

// The module Bundle: bundles and property lists.

#include <ZEBPlatform/Bundle/NSBundle.h>
#include <ZEBPlatform/Bundle/NSPropertyListSerialization.h>
