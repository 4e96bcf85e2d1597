#pragma once

#include <ZEBPlatform/Security/KeychainItem.h>
#include <ZEBPlatform/Security/SecKey.h>

namespace zeb::detail {

/// The key that an item's value contains. `errSecDecode` if the value is not the key that the
/// attributes describe.
OSStatus makeSecKey(const KeychainItem& item, SecKeyRef& key);

}  // namespace zeb::detail
