#pragma once

#include <ZEBPlatform/AddressBook/CNContactKeys.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>

#include <cstdint>

namespace zeb {

/// Thrown (as the name of an `NSException`) by readers of properties that were not fetched.
extern const char* const CNContactPropertyNotFetchedExceptionName;

/// What a contact consists of. Nil texts count as empty, and nil arrays as empty ones.
struct CNContactFields {
  NSString identifier = nullptr;
  NSString namePrefix = nullptr;
  NSString givenName = nullptr;
  NSString middleName = nullptr;
  NSString familyName = nullptr;
  NSString nameSuffix = nullptr;
  NSString nickname = nullptr;
  NSString organizationName = nullptr;
  NSString formattedName = nullptr;
  NSArray emailAddresses = nullptr;  ///< of strings
  NSArray phoneNumbers = nullptr;    ///< of strings
};

/// Chooses contacts; made by `CNContact`. Immutable; any thread.
class CNContactPredicate final : public NSObject {
 public:
  explicit CNContactPredicate(const NSString& containerIdentifier)
      : containerIdentifier_(containerIdentifier.copy()) {}

  const NSString& containerIdentifier() const noexcept { return containerIdentifier_; }

 private:
  const NSString containerIdentifier_;
};

/// One entry of the address book, with the properties that were asked for. `CNContactStore` makes
/// contacts; programs and tests with contacts of their own make them, too. Immutable; any thread.
///
/// The readers answer no nil: a text that the entry does not have is empty, and a list is an empty
/// array. Reading a property whose key was not among those fetched is a programming error, which
/// throws NSException (CNContactPropertyNotFetchedExceptionName).
class CNContact final : public NSObject {
 public:
  /// The contacts of a container; see `CNContactStore::defaultContainerIdentifier`.
  static Ref<CNContactPredicate> predicateForContactsInContainerWithIdentifier(
      const NSString& containerIdentifier);

  /// A contact of which all properties were fetched.
  explicit CNContact(CNContactFields fields);
  /// A contact of which the properties with these keys were fetched. `keysToFetch` is as for
  /// `CNContactStore::unifiedContactsMatchingPredicate`.
  CNContact(CNContactFields fields, const NSArray& keysToFetch);

  /// The entry's own identifier, which stays the same when the entry changes. Always fetched.
  const NSString& identifier() const noexcept { return fields_.identifier; }
  const NSString& namePrefix() const;
  const NSString& givenName() const;
  const NSString& middleName() const;
  const NSString& familyName() const;
  const NSString& nameSuffix() const;
  const NSString& nickname() const;
  const NSString& organizationName() const;
  const NSString& formattedName() const;
  /// Strings, in the address book's order.
  const NSArray& emailAddresses() const;
  /// Strings as they were entered, in the address book's order.
  const NSArray& phoneNumbers() const;

  /// Whether the property was fetched. False for a text that is no key.
  bool isKeyAvailable(const NSString& key) const noexcept;

  /// Equal identifiers, equal keys fetched and equal properties.
  bool isEqual(const NSObject& other) const override;
  std::size_t hash() const noexcept override;

  /// For this module only: immutable fields, and the set of keys as bits.
  CNContact(CNContactFields fields, std::uint32_t keys);

 private:
  void mustHaveFetched(std::uint32_t key) const;

  CNContactFields fields_;
  std::uint32_t keys_;
};

}  // namespace zeb
