#pragma once

// The module Bundle: the host bundle, loaded frameworks, the process, error texts, method exchange.

#include <ZEBUtilities/Bundle/NSBundle+ZEBAdditions.h>
#include <ZEBUtilities/Bundle/NSError+ZEBAdditions.h>
#include <ZEBUtilities/Bundle/ZEBFrameworkLoading.h>
#include <ZEBUtilities/Bundle/ZEBProcessEnvironment.h>
#include <ZEBUtilities/Bundle/ZEBSwizzle.h>
