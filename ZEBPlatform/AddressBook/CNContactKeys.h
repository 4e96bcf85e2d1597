#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Memory/NSObject.h>

namespace zeb {

// The keys of a contact's properties, for `CNContactStore::unifiedContactsMatchingPredicate`.

/// Always fetched.
extern const char* const CNContactIdentifierKey;
extern const char* const CNContactNamePrefixKey;
extern const char* const CNContactGivenNameKey;
extern const char* const CNContactMiddleNameKey;
extern const char* const CNContactFamilyNameKey;
extern const char* const CNContactNameSuffixKey;
extern const char* const CNContactNicknameKey;
extern const char* const CNContactOrganizationNameKey;
/// The whole name as the contact's author wrote it, which only vCards have.
extern const char* const CNContactFormattedNameKey;
extern const char* const CNContactEmailAddressesKey;
extern const char* const CNContactPhoneNumbersKey;

/// Several keys as one element of a list of keys. Immutable; any thread.
class CNKeyDescriptor final : public NSObject {
 public:
  explicit CNKeyDescriptor(const NSArray& keys) : keys_(keys.copy()) {}

  const NSArray& keys() const noexcept { return keys_; }

 private:
  const NSArray keys_;
};

}  // namespace zeb
