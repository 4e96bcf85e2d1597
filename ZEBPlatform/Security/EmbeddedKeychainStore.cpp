#include <ZEBPlatform/Security/EmbeddedKeychainStore.h>

namespace zeb {

// The store is not there yet: opening it fails, and so do the calls that would use it.
Ref<EmbeddedKeychainStore> EmbeddedKeychainStore::open(const NSString&, KeychainMasterKey,
                                                       OSStatus* status) {
  if (status) *status = errSecUnimplemented;
  return nullptr;
}

}  // namespace zeb
