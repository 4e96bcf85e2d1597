#pragma once

#include <Contacts/ZEBContact.h>
#include <ZEBPlatform/Foundation/NSData.h>

namespace zeb {

/// A protocol with its implementation, for classes that write contacts as vCards 4.0 (RFC 6350).
class ContactvCardSerialization {
 public:
  /// The name, then the phone numbers, then the e-mail addresses, each in a line of its own:
  ///
  ///     BEGIN:VCARD
  ///     VERSION:4.0
  ///     FN:Ann Lee
  ///     TEL;TYPE=voice;VALUE=uri:+1 555 0100;ext=12
  ///     EMAIL;TYPE=internet:ann@example.org
  ///     END:VCARD
  ///
  /// The lines end in CR LF, and the text is in UTF-8. Nil if a text contains an unpaired
  /// surrogate, which has no UTF-8 form. Elements of the two arrays that are not strings are left
  /// out.
  ///
  /// Three departures from the standard are deliberate and will stay, so that each byte of the
  /// output is predictable: the value of TEL has no URI scheme although its parameter promises a
  /// URI; in a number, each ";" and "," becomes ";ext="; and no value is escaped or folded. So a
  /// line break inside a name or an address begins a new line of the vCard: do not pass contacts
  /// of untrusted origin on to readers for which that matters.
  virtual NSData vCardBySerializingContact(const ZEBContact& contact) const;

 protected:
  ~ContactvCardSerialization() = default;
};

}  // namespace zeb
