#pragma once

#include <Contacts/ContactvCardSerialization.h>
#include <Contacts/ZEBContact.h>
#include <ZEBPlatform/KeyedCoding/NSCoder.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>

namespace zeb {

/// The contacts that `ContactBackingStore` makes. Applications name this class only to archive a
/// contact and to read it back; otherwise they use the protocol `ZEBContact`.
///
/// The dynamic runtime and archives know the class as "_Contact". In C++ it has no underscore,
/// because the language reserves names that begin with an underscore and an upper-case letter.
class Contact final : public NSObject,
                      public ZEBContact,
                      public ContactvCardSerialization,
                      public NSSecureCoding {
 public:
  Contact() = delete;
  /// Derives `normalizedPhoneNumbers`. The arrays consist of strings. A nil text is kept as "", a
  /// nil array as an empty one.
  Contact(const NSString& fullName, const NSArray& emailAddresses, const NSArray& phoneNumbers,
          const NSString& uniqueIdentifier);

  /// See `NSKeyedUnarchiver`. Missing fields are empty.
  static Ref<Contact> initWithCoder(NSCoder& coder);

  /// Registered as "_Contact" when this is called first, with all functions here under their
  /// selectors. The decoding initialiser is a class method there.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  NSString fullName() const override { return fullName_; }
  NSArray emailAddresses() const override { return emailAddresses_; }
  NSArray phoneNumbers() const override { return phoneNumbers_; }
  NSString uniqueIdentifier() const override { return uniqueIdentifier_; }
  NSData vCardRepresentation() const override { return vCardBySerializingContact(*this); }

  /// The phone numbers as `normalizedPhoneNumber` writes them, in the same order, without those
  /// that have no digits. An archive keeps them, so that they stay what they were when the contact
  /// was read from the address book.
  const NSArray& normalizedPhoneNumbers() const noexcept { return normalizedPhoneNumbers_; }

  /// Writes the fields under the keys "fullName", "emailAddresses", "phoneNumbers",
  /// "normalizedPhoneNumbers" and "uniqueIdentifier".
  void encodeWithCoder(NSCoder& coder) const override;

 private:
  explicit Contact(NSCoder& coder);

  const NSString fullName_;
  const NSArray emailAddresses_;
  const NSArray phoneNumbers_;
  const NSArray normalizedPhoneNumbers_;
  const NSString uniqueIdentifier_;
};

}  // namespace zeb
