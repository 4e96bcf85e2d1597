#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb {

/// A protocol (see `ProtocolRef`) of people in the user's address book. Its objects are immutable,
/// so any thread may use them.
class ZEBContact {
 public:
  /// In the order and the style of the user's language; never nil.
  virtual NSString fullName() const = 0;
  /// Strings, in the address book's order; never nil.
  virtual NSArray emailAddresses() const = 0;
  /// Strings as the user entered them, in the address book's order; never nil.
  virtual NSArray phoneNumbers() const = 0;
  /// The address book's identifier of the contact.
  virtual NSString uniqueIdentifier() const = 0;
  /// The contact as `ContactvCardSerialization` writes it, made anew by each call; nil if it has no
  /// UTF-8 form.
  virtual NSData vCardRepresentation() const = 0;

 protected:
  ~ZEBContact() = default;
};

}  // namespace zeb
