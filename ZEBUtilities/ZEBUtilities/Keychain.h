#pragma once

// The module Keychain: an application's passwords, keychain items of single passwords, and keys
// and values for login verification.

#include <Keychain/KeychainItemUtils.h>
#include <Keychain/ZEBKeychain.h>
#include <Keychain/ZEBKeychainConfiguration.h>
#include <Keychain/ZEBKeychainDefaultOrvaneConfiguration.h>
#include <Keychain/ZEBRSAOperations.h>
#include <Keychain/ZEBSecurityKey.h>
