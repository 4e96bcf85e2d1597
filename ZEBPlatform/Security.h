#pragma once

// The module Security: message digests, keychain items, keys.

#include <ZEBPlatform/Security/EmbeddedKeychainStore.h>
#include <ZEBPlatform/Security/KeychainItem.h>
#include <ZEBPlatform/Security/KeychainStore.h>
#include <ZEBPlatform/Security/MessageDigest.h>
#include <ZEBPlatform/Security/SecBase.h>
#include <ZEBPlatform/Security/SecItem.h>
#include <ZEBPlatform/Security/SecKey.h>
#include <ZEBPlatform/Security/SecKeychain.h>
#include <ZEBPlatform/Security/SecRandom.h>
#include <ZEBPlatform/Security/SecretBytes.h>
