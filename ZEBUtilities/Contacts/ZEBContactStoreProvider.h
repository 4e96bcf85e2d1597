#pragma once

#include <Contacts/ZEBContactStoreProviderType.h>
#include <ZEBPlatform/AddressBook/CNAuthorization.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>

namespace zeb {

class ContactBackingStore;

/// Where applications get the contacts of the user's address book from. Each provider has a store
/// of its own, which keeps its own copy of the contacts, so one provider per application is enough.
/// Any thread.
class ZEBContactStoreProvider final : public NSObject, public ZEBContactStoreProviderType {
 public:
  ZEBContactStoreProvider();
  ~ZEBContactStoreProvider() override;

  /// Registered as "ZEBContactStoreProvider" when this is called first, with all functions here
  /// under their selectors.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  /// Whether the user lets the program read the contacts.
  static CNAuthorizationStatus contactStoreAuthorizationStatus();

  /// The same object each time; a `ContactBackingStore`.
  ProtocolRef<ZEBContactStore> contactStore() const override;

 private:
  const Ref<ContactBackingStore> contactStore_;
};

}  // namespace zeb
