#pragma once

// The module Keychain: an application's passwords, and keychain items of single passwords.

#include <Keychain/KeychainItemUtils.h>
#include <Keychain/ZEBKeychain.h>
#include <Keychain/ZEBKeychainConfiguration.h>
#include <Keychain/ZEBKeychainDefaultOrvaneConfiguration.h>
