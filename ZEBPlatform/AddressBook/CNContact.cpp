#include <ZEBPlatform/AddressBook/CNContact.h>
#include <ZEBPlatform/AddressBook/ContactKeysPrivate.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/NSException.h>

#include <utility>

namespace zeb {

const char* const CNContactPropertyNotFetchedExceptionName = "CNContactPropertyNotFetchedException";

namespace {

/// The texts of a contact, in one order.
constexpr std::pair<NSString CNContactFields::*, detail::ContactKey> texts[] = {
    {&CNContactFields::identifier, detail::identifierKey},
    {&CNContactFields::namePrefix, detail::namePrefixKey},
    {&CNContactFields::givenName, detail::givenNameKey},
    {&CNContactFields::middleName, detail::middleNameKey},
    {&CNContactFields::familyName, detail::familyNameKey},
    {&CNContactFields::nameSuffix, detail::nameSuffixKey},
    {&CNContactFields::nickname, detail::nicknameKey},
    {&CNContactFields::organizationName, detail::organizationNameKey},
    {&CNContactFields::formattedName, detail::formattedNameKey},
};
constexpr std::pair<NSArray CNContactFields::*, detail::ContactKey> lists[] = {
    {&CNContactFields::emailAddresses, detail::emailAddressesKey},
    {&CNContactFields::phoneNumbers, detail::phoneNumbersKey},
};

/// Without texts and lists that their owner may change, the texts in the lists included.
CNContactFields copyOf(CNContactFields fields) {
  for (const auto& [text, key] : texts) fields.*text = (fields.*text).copy();
  for (const auto& [list, key] : lists) fields.*list = (fields.*list).detachedCopy();
  return fields;
}

}  // namespace

Ref<CNContactPredicate> CNContact::predicateForContactsInContainerWithIdentifier(
    const NSString& containerIdentifier) {
  return makeRef<CNContactPredicate>(containerIdentifier);
}

CNContact::CNContact(CNContactFields fields)
    : CNContact(copyOf(std::move(fields)), detail::allContactKeys) {}

CNContact::CNContact(CNContactFields fields, const NSArray& keysToFetch)
    : CNContact(copyOf(std::move(fields)), detail::contactKeysOfList(keysToFetch)) {}

CNContact::CNContact(CNContactFields fields, std::uint32_t keys)
    : fields_(std::move(fields)), keys_(keys | detail::identifierKey) {
  static const detail::NeverDestroyed<NSString> emptyText("");
  static const detail::NeverDestroyed<NSArray> emptyList(NSArray::array());
  // Properties that were not fetched use no memory.
  for (const auto& [text, key] : texts) {
    NSString& field = fields_.*text;
    if (!(keys_ & key)) {
      field = nullptr;
    } else if (!field) {
      field = *emptyText;
    }
  }
  for (const auto& [list, key] : lists) {
    NSArray& field = fields_.*list;
    if (!(keys_ & key)) {
      field = nullptr;
    } else if (!field) {
      field = *emptyList;
    }
  }
}

void CNContact::mustHaveFetched(std::uint32_t key) const {
  if (keys_ & key) return;
  throw NSException(CNContactPropertyNotFetchedExceptionName,
                    "A property was read that was not fetched with the contact; add its key to "
                    "keysToFetch.");
}

const NSString& CNContact::namePrefix() const {
  mustHaveFetched(detail::namePrefixKey);
  return fields_.namePrefix;
}
const NSString& CNContact::givenName() const {
  mustHaveFetched(detail::givenNameKey);
  return fields_.givenName;
}
const NSString& CNContact::middleName() const {
  mustHaveFetched(detail::middleNameKey);
  return fields_.middleName;
}
const NSString& CNContact::familyName() const {
  mustHaveFetched(detail::familyNameKey);
  return fields_.familyName;
}
const NSString& CNContact::nameSuffix() const {
  mustHaveFetched(detail::nameSuffixKey);
  return fields_.nameSuffix;
}
const NSString& CNContact::nickname() const {
  mustHaveFetched(detail::nicknameKey);
  return fields_.nickname;
}
const NSString& CNContact::organizationName() const {
  mustHaveFetched(detail::organizationNameKey);
  return fields_.organizationName;
}
const NSString& CNContact::formattedName() const {
  mustHaveFetched(detail::formattedNameKey);
  return fields_.formattedName;
}
const NSArray& CNContact::emailAddresses() const {
  mustHaveFetched(detail::emailAddressesKey);
  return fields_.emailAddresses;
}
const NSArray& CNContact::phoneNumbers() const {
  mustHaveFetched(detail::phoneNumbersKey);
  return fields_.phoneNumbers;
}

bool CNContact::isKeyAvailable(const NSString& key) const noexcept {
  return keys_ & detail::contactKeyNamed(key);
}

bool CNContact::isEqual(const NSObject& other) const {
  const auto* contact = dynamic_cast<const CNContact*>(&other);
  if (!contact || contact->keys_ != keys_) return false;
  for (const auto& [text, key] : texts)
    if (!(fields_.*text == contact->fields_.*text)) return false;
  for (const auto& [list, key] : lists)
    if (!(fields_.*list == contact->fields_.*list)) return false;
  return true;
}

std::size_t CNContact::hash() const noexcept { return fields_.identifier.hash(); }

}  // namespace zeb
