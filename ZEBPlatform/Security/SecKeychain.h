#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Security/KeychainStore.h>

namespace zeb {

/// Chooses the place that `SecItemAdd` and its companions use from now on; calls that are running
/// end with the place they began with. Nil, and the state at first, means the embedded store in the
/// user's data folder, see EmbeddedKeychainStore.h. There is never a fall-back from one place to
/// another: if the place cannot be used, the calls fail. Any thread.
void SecKeychainSetStore(const Ref<KeychainStore>& store);

/// Chooses the access group of items that are added or searched without one. At first, and after
/// nil, it is the application's own group: the main bundle's "AppIdentifierPrefix" followed by the
/// bundle identifier, the bundle identifier alone without the prefix, and empty without both. A
/// missing bundle identifier deliberately appends "(null)" to the prefix, because the configuration
/// of applications makes its group of the same entries in this way. Any thread.
void SecKeychainSetDefaultAccessGroup(const NSString& group);
NSString SecKeychainDefaultAccessGroup();

}  // namespace zeb
