#include <Contacts/Contact.h>
#include <Contacts/ContactBackingStore.h>
#include <ZEBPlatform/AddressBook/CNContact.h>
#include <ZEBPlatform/AddressBook/CNContactFormatter.h>
#include <ZEBPlatform/AddressBook/CNContactKeys.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Dispatch/DispatchQueue.h>
#include <ZEBPlatform/Foundation/detail/ArrayBuilder.h>
#include <ZEBPlatform/Logging/OLGLogging.h>
#include <ZEBPlatform/Memory/WeakRef.h>
#include <ZEBPlatform/Notifications/NSNotificationCenter.h>
#include <ZEBPlatform/Runtime/BlockConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>

#include <string>
#include <utility>

namespace zeb {

namespace {

const dispatch_queue_t& contactsQueue() {
  static const detail::NeverDestroyed<dispatch_queue_t> queue(
      dispatch_queue_create(std::string(ZEBUtilitiesIdentifierPrefix) + ".contacts_store"));
  return *queue;
}

/// Nil, and one line in the log, if the address book cannot be read.
NSArray contactsIn(const CNContactStore& store) {
  const NSArray keys{
      CNContactGivenNameKey, CNContactFamilyNameKey, CNContactEmailAddressesKey,
      CNContactPhoneNumbersKey,
      CNContactFormatter::descriptorForRequiredKeysForStyle(CNContactFormatterStyleFullName)};
  NSError error;
  const NSArray entries = store.unifiedContactsMatchingPredicate(
      CNContact::predicateForContactsInContainerWithIdentifier(store.defaultContainerIdentifier()),
      keys, &error);
  if (entries.isNil()) {
    const char* const channel = ZEBUtilitiesLoggingChannel_Generic;
    if (OLGCanLog(nullptr, OLGLevelError, channel)) {
      OLGLogEx(nullptr, OLGLevelError, channel, "ZEBUtilities/ZEBUtilities/ContactBackingStore",
               "-[ContactBackingStore fetchContactsWithCompletion:]", __LINE__,
               "The address book could not be read: %@", error.localizedDescription());
    }
    return nullptr;
  }
  detail::ArrayBuilder contacts(entries.count());
  const CNContactFormatter formatter(CNContactFormatterStyleFullName);
  for (const Value& element : entries) {
    const Ref<CNContact> entry = element.object<CNContact>();
    contacts.append(makeRef<Contact>(formatter.stringFromContact(entry), entry->emailAddresses(),
                                     entry->phoneNumbers(), entry->identifier()));
  }
  return contacts.finish();
}

ProtocolRef<ZEBContact> contactWithUniqueIdentifier(const NSArray& contacts,
                                                    const NSString& uniqueIdentifier) {
  for (const Value& element : contacts) {
    Ref<Contact> contact = element.object<Contact>();
    if (contact->uniqueIdentifier() == uniqueIdentifier) return contact;
  }
  return nullptr;
}

}  // namespace

ContactBackingStore::ContactBackingStore() : contactStore_(makeRef<CNContactStore>()) {
  changeObserver_ = NSNotificationCenter::defaultCenter()->addObserverForName(
      CNContactStoreDidChangeNotification, nullptr, nullptr,
      [weak = WeakRef<ContactBackingStore>(this)](const Ref<NSNotification>& notification) {
        if (!notification->object().object<CNContactStore>()) return;
        if (const Ref<ContactBackingStore> self = weak.lock()) self->addressBookDidChange();
      });
}

ContactBackingStore::~ContactBackingStore() {
  NSNotificationCenter::defaultCenter()->removeObserver(changeObserver_);
}

CNAuthorizationStatus ContactBackingStore::currentAuthorizationStatus() {
  return CNContactStore::authorizationStatusForEntityType(CNEntityTypeContacts);
}

void ContactBackingStore::authorizeWithCompletion(AuthorizationCompletion completion) {
  contactStore_->requestAccessForEntityType(
      CNEntityTypeContacts, [completion = std::move(completion)](bool, const NSError&) {
        if (!completion) return;
        const CNAuthorizationStatus status = currentAuthorizationStatus();
        dispatch_async(dispatch_get_main_queue(), [completion, status] { completion(status); });
      });
}

void ContactBackingStore::fetchContactsWithCompletion(ContactsCompletion completion) {
  const auto deliver = [](const NSArray& contacts, const ContactsCompletion& receiver) {
    if (!receiver) return;
    dispatch_async(dispatch_get_main_queue(), [contacts, receiver] { receiver(contacts); });
  };
  if (currentAuthorizationStatus() != CNAuthorizationStatusAuthorized) {
    if (completion) completion(nullptr);
    return;
  }
  if (const NSArray cached = cachedContacts(); !cached.isNil()) {
    deliver(cached, completion);
    return;
  }
  dispatch_async(contactsQueue(), [weak = WeakRef<ContactBackingStore>(this), deliver,
                                   completion = std::move(completion)] {
    if (const Ref<ContactBackingStore> self = weak.lock()) {
      deliver(self->loadedContacts(), completion);
    }
  });
}

void ContactBackingStore::fetchContactWithUniqueIdentifier(const NSString& uniqueIdentifier,
                                                           ContactCompletion completion) {
  if (!completion) return fetchContactsWithCompletion(nullptr);
  fetchContactsWithCompletion([uniqueIdentifier = uniqueIdentifier.copy(),
                               completion = std::move(completion)](const NSArray& contacts) {
    completion(contactWithUniqueIdentifier(contacts, uniqueIdentifier));
  });
}

NSArray ContactBackingStore::cachedContacts() const {
  const detail::LockGuard guard(lock_);
  return cachedContacts_;
}

NSArray ContactBackingStore::loadedContacts() {
  detail::LockGuard guard(lock_);
  if (!cachedContacts_.isNil()) return cachedContacts_;
  const std::uint64_t changesBefore = changeCount_;
  guard.unlock();
  NSArray contacts = contactsIn(*contactStore_);
  guard.lock();
  if (changeCount_ == changesBefore) cachedContacts_ = contacts;
  return contacts;
}

void ContactBackingStore::addressBookDidChange() {
  NSArray dropped;
  const detail::LockGuard guard(lock_);
  ++changeCount_;
  dropped.swap(cachedContacts_);
}

Class* ContactBackingStore::runtimeClass() {
  using Self = ContactBackingStore;
  static Class* const cls = registerClass(
      "ContactBackingStore",
      {
          classMethod("init", [] { return makeRef<Self>(); }),
          classMethod("new", [] { return makeRef<Self>(); }),
          classMethod("currentAuthorizationStatus", &Self::currentAuthorizationStatus),
          property("cachedContacts", &Self::cachedContacts),
          property("contactStore", &Self::contactStore),
          method("authorizeWithCompletion:",
                 [](Self& self, const AuthorizationCompletion& completion) {
                   self.authorizeWithCompletion(completion);
                 }),
          method("fetchContactsWithCompletion:",
                 [](Self& self, const ContactsCompletion& completion) {
                   self.fetchContactsWithCompletion(completion);
                 }),
          method("fetchContactWithUniqueIdentifier:completion:",
                 [](Self& self, const NSString& uniqueIdentifier,
                    const ContactCompletion& completion) {
                   self.fetchContactWithUniqueIdentifier(uniqueIdentifier, completion);
                 }),
      });
  return cls;
}

}  // namespace zeb
