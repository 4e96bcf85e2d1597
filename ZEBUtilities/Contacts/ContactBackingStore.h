#pragma once

#include <Contacts/ZEBContactStore.h>
#include <ZEBPlatform/AddressBook/CNContactStore.h>
#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>

#include <cstdint>

namespace zeb {

/// The contacts of the user's address book, which it reads once and keeps until the address book
/// changes. Applications get one from `ZEBContactStoreProvider`.
///
/// The address book is read on one serial queue of the process, in the order of the fetches, so
/// that several fetches at the same time lead to one read. If the store is destroyed before the
/// turn of a fetch comes, the fetch ends without calling its completion.
///
/// The contacts are dropped as soon as `CNContactStoreDidChangeNotification` is posted with a
/// `CNContactStore` as its object, on the posting thread. Contacts that were being read at that
/// time still go to the fetches that wait for them, but are not kept.
class ContactBackingStore final : public NSObject, public ZEBContactStore {
 public:
  ContactBackingStore();
  ~ContactBackingStore() override;

  /// Registered as "ContactBackingStore" when this is called first, with all functions here under
  /// their selectors.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  /// As `CNContactStore::authorizationStatusForEntityType`.
  static CNAuthorizationStatus currentAuthorizationStatus();

  void authorizeWithCompletion(AuthorizationCompletion completion) override;
  void fetchContactsWithCompletion(ContactsCompletion completion) override;
  /// Reads and keeps all contacts, too, unless they are kept already. Of several contacts with this
  /// identifier the first one is passed.
  void fetchContactWithUniqueIdentifier(const NSString& uniqueIdentifier,
                                        ContactCompletion completion) override;

  /// The contacts of the last read, `ZEBContact`s; nil if they have to be read. Any thread.
  NSArray cachedContacts() const ZEB_EXCLUDES(lock_);
  /// The platform's store that the contacts are read from.
  const Ref<CNContactStore>& contactStore() const noexcept { return contactStore_; }

 private:
  /// The cached contacts, or those that it reads and caches. On the contacts queue.
  NSArray loadedContacts() ZEB_EXCLUDES(lock_);
  void addressBookDidChange() ZEB_EXCLUDES(lock_);

  const Ref<CNContactStore> contactStore_;
  Ref<NSObject> changeObserver_;
  mutable detail::Lock lock_;
  NSArray cachedContacts_ ZEB_GUARDED_BY(lock_);
  /// A read that began before a change must not be kept after it.
  std::uint64_t changeCount_ ZEB_GUARDED_BY(lock_) = 0;
};

}  // namespace zeb
