#include <Contacts/Contact.h>
#include <Contacts/NormalizedPhoneNumber.h>
#include <ZEBPlatform/Foundation/detail/ArrayBuilder.h>
#include <ZEBPlatform/KeyedCoding/CoderConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>

#include <algorithm>

namespace zeb {

namespace {

constexpr const char* fullNameKey = "fullName";
constexpr const char* emailAddressesKey = "emailAddresses";
constexpr const char* phoneNumbersKey = "phoneNumbers";
constexpr const char* normalizedPhoneNumbersKey = "normalizedPhoneNumbers";
constexpr const char* uniqueIdentifierKey = "uniqueIdentifier";

NSString kept(const NSString& text) { return text.isNil() ? NSString("") : text.copy(); }
/// The array and its strings, none of which can change. Most arrays need no copy.
NSArray kept(const NSArray& strings) {
  if (strings.isNil()) return NSArray::array();
  const bool hasMutableStrings = std::ranges::any_of(strings, &Value::isMutable);
  return hasMutableStrings ? strings.detachedCopy() : strings.copy();
}

NSArray normalized(const NSArray& phoneNumbers) {
  detail::ArrayBuilder numbers(phoneNumbers.count());
  for (const Value& phoneNumber : phoneNumbers) {
    const NSString number = normalizedPhoneNumber(NSString(phoneNumber));
    if (!number.empty()) numbers.append(number);
  }
  return numbers.finish();
}

}  // namespace

Contact::Contact(const NSString& fullName, const NSArray& emailAddresses,
                 const NSArray& phoneNumbers, const NSString& uniqueIdentifier)
    : fullName_(kept(fullName)),
      emailAddresses_(kept(emailAddresses)),
      phoneNumbers_(kept(phoneNumbers)),
      normalizedPhoneNumbers_(normalized(phoneNumbers)),
      uniqueIdentifier_(kept(uniqueIdentifier)) {}

Contact::Contact(NSCoder& coder)
    : fullName_(kept(coder.decodeStringForKey(fullNameKey))),
      emailAddresses_(kept(coder.decodeArrayOfStringsForKey(emailAddressesKey))),
      phoneNumbers_(kept(coder.decodeArrayOfStringsForKey(phoneNumbersKey))),
      normalizedPhoneNumbers_(kept(coder.decodeArrayOfStringsForKey(normalizedPhoneNumbersKey))),
      uniqueIdentifier_(kept(coder.decodeStringForKey(uniqueIdentifierKey))) {}

Ref<Contact> Contact::initWithCoder(NSCoder& coder) {
  return Ref<Contact>::adopt(new Contact(coder));
}

void Contact::encodeWithCoder(NSCoder& coder) const {
  coder.encodeObject(fullName_, fullNameKey);
  coder.encodeObject(emailAddresses_, emailAddressesKey);
  coder.encodeObject(phoneNumbers_, phoneNumbersKey);
  coder.encodeObject(normalizedPhoneNumbers_, normalizedPhoneNumbersKey);
  coder.encodeObject(uniqueIdentifier_, uniqueIdentifierKey);
}

Class* Contact::runtimeClass() {
  using Self = Contact;
  static Class* const cls = registerClass(
      "_Contact",
      {
          classMethod("initWithCoder:",
                      [](NSCoder* coder) { return initWithCoder(coderArgument(coder)); }),
          method(
              "encodeWithCoder:",
              [](const Self& self, NSCoder* coder) { self.encodeWithCoder(coderArgument(coder)); }),
          property("fullName", &Self::fullName),
          property("emailAddresses", &Self::emailAddresses),
          property("phoneNumbers", &Self::phoneNumbers),
          property("normalizedPhoneNumbers", &Self::normalizedPhoneNumbers),
          property("uniqueIdentifier", &Self::uniqueIdentifier),
          property("vCardRepresentation", &Self::vCardRepresentation),
          method("vCardBySerializingContact:",
                 [](const Self& self, const ProtocolRef<ZEBContact>& contact) {
                   return contact ? self.vCardBySerializingContact(*contact) : NSData();
                 }),
      });
  return cls;
}

}  // namespace zeb
