#pragma once

// The module Security: message digests.

#include <ZEBPlatform/Security/MessageDigest.h>
