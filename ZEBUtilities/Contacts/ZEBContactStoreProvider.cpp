#include <Contacts/ContactBackingStore.h>
#include <Contacts/ZEBContactStoreProvider.h>
#include <ZEBPlatform/Runtime/Registration.h>

namespace zeb {

ZEBContactStoreProvider::ZEBContactStoreProvider()
    : contactStore_(makeRef<ContactBackingStore>()) {}

ZEBContactStoreProvider::~ZEBContactStoreProvider() = default;

CNAuthorizationStatus ZEBContactStoreProvider::contactStoreAuthorizationStatus() {
  return ContactBackingStore::currentAuthorizationStatus();
}

ProtocolRef<ZEBContactStore> ZEBContactStoreProvider::contactStore() const { return contactStore_; }

Class* ZEBContactStoreProvider::runtimeClass() {
  using Self = ZEBContactStoreProvider;
  static Class* const cls = registerClass(
      "ZEBContactStoreProvider",
      {
          classMethod("init", [] { return makeRef<Self>(); }),
          classMethod("new", [] { return makeRef<Self>(); }),
          classMethod("contactStoreAuthorizationStatus", &Self::contactStoreAuthorizationStatus),
          property("contactStore", &Self::contactStore),
      });
  return cls;
}

}  // namespace zeb
