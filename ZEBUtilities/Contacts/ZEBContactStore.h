#pragma once

#include <Contacts/ZEBContact.h>
#include <ZEBPlatform/AddressBook/CNAuthorization.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/Block.h>
#include <ZEBPlatform/Memory/ProtocolRef.h>

namespace zeb {

/// A protocol (see `ProtocolRef`) of sources of contacts. Any thread may call it.
///
/// A class that implements it also has the function
/// `static CNAuthorizationStatus currentAuthorizationStatus()`: whether the user lets the program
/// read the contacts.
///
/// A completion is called once, on the main queue; exceptions are named below. A nil completion is
/// allowed.
class ZEBContactStore {
 public:
  using AuthorizationCompletion = Block<void(CNAuthorizationStatus status)>;
  using ContactsCompletion = Block<void(const NSArray& contacts)>;
  using ContactCompletion = Block<void(const ProtocolRef<ZEBContact>& contact)>;

  /// Asks the user for access to the contacts, unless the user has answered before, and passes the
  /// status that results.
  virtual void authorizeWithCompletion(AuthorizationCompletion completion) = 0;

  /// Passes all contacts, in the address book's order: `ZEBContact`s, which
  /// `ProtocolRef<ZEBContact>::from(element.object())` gives. Without access it passes nil at once,
  /// on the calling thread. Nil also if the address book cannot be read.
  virtual void fetchContactsWithCompletion(ContactsCompletion completion) = 0;

  /// Passes the contact with this identifier, or nil if there is none. Without access it passes nil
  /// at once, on the calling thread.
  virtual void fetchContactWithUniqueIdentifier(const NSString& uniqueIdentifier,
                                                ContactCompletion completion) = 0;

 protected:
  ~ZEBContactStore() = default;
};

}  // namespace zeb
