#pragma once

#include <Contacts/ZEBContactStore.h>
#include <ZEBPlatform/Memory/ProtocolRef.h>

namespace zeb {

/// A protocol (see `ProtocolRef`) of objects that give an application its contacts.
///
/// A class that implements it also has the function
/// `static CNAuthorizationStatus contactStoreAuthorizationStatus()`: the status that its store's
/// class answers.
class ZEBContactStoreProviderType {
 public:
  virtual ProtocolRef<ZEBContactStore> contactStore() const = 0;

 protected:
  ~ZEBContactStoreProviderType() = default;
};

}  // namespace zeb
