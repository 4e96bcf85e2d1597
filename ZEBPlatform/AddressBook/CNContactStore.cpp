#include <ZEBPlatform/AddressBook/AuthorizationPrivate.h>
#include <ZEBPlatform/AddressBook/CNContactStore.h>
#include <ZEBPlatform/AddressBook/ContactFolderPrivate.h>
#include <ZEBPlatform/AddressBook/ContactKeysPrivate.h>
#include <ZEBPlatform/AddressBook/HostConfigurationPrivate.h>
#include <ZEBPlatform/AddressBook/StoreWatchPrivate.h>
#include <ZEBPlatform/Foundation/NSException.h>

#include <utility>

namespace zeb {

const char* const CNContactStoreDidChangeNotification = "CNContactStoreDidChangeNotification";
const char* const CNErrorDomain = "CNErrorDomain";
const char* const CNLoggingChannel = "AddressBook";

namespace {

constexpr const char* containerIdentifier = "contacts";

void requireContacts(CNEntityType entityType) {
  if (entityType != CNEntityTypeContacts)
    raiseInvalidArgument("The only entity type is CNEntityTypeContacts.");
}

}  // namespace

CNContactStore::CNContactStore() { detail::addWatchingStore(*this); }

CNContactStore::~CNContactStore() { detail::removeWatchingStore(*this); }

CNAuthorizationStatus CNContactStore::authorizationStatusForEntityType(CNEntityType entityType) {
  requireContacts(entityType);
  return detail::authorizationStatus();
}

void CNContactStore::requestAccessForEntityType(
    CNEntityType entityType, Block<void(bool isGranted, const NSError& error)> completion) {
  requireContacts(entityType);
  detail::requestAuthorization(std::move(completion));
}

bool CNContactStore::forgetAuthorizationForEntityType(CNEntityType entityType, NSError* error) {
  requireContacts(entityType);
  return detail::forgetAuthorization(error);
}

NSString CNContactStore::defaultContainerIdentifier() const { return containerIdentifier; }

NSArray CNContactStore::unifiedContactsMatchingPredicate(const Ref<CNContactPredicate>& predicate,
                                                         const NSArray& keysToFetch,
                                                         NSError* error) const {
  if (!predicate) raiseInvalidArgument("The predicate that chooses contacts is nil.");
  const std::uint32_t keys = detail::contactKeysOfList(keysToFetch);
  const CNAuthorizationStatus status = detail::authorizationStatus();
  if (status != CNAuthorizationStatusAuthorized) {
    if (error) *error = detail::authorizationError(status);
    return nullptr;
  }
  if (predicate->containerIdentifier() != NSString(containerIdentifier)) {
    if (error) {
      *error = NSError(
          CNErrorDomain, CNErrorCodeRecordDoesNotExist,
          NSDictionary{{NSLocalizedDescriptionKey,
                        NSString::stringWithFormat(
                            "There is no container \"%@\". Use defaultContainerIdentifier().",
                            predicate->containerIdentifier())}});
    }
    return nullptr;
  }
  return detail::contactsOfFolder(detail::contactsFolder(CNCurrentHostConfiguration()), keys,
                                  error);
}

}  // namespace zeb
