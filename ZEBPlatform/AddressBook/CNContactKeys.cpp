#include <ZEBPlatform/AddressBook/CNContactKeys.h>
#include <ZEBPlatform/AddressBook/ContactKeysPrivate.h>
#include <ZEBPlatform/Foundation/NSException.h>

namespace zeb {

const char* const CNContactIdentifierKey = "identifier";
const char* const CNContactNamePrefixKey = "namePrefix";
const char* const CNContactGivenNameKey = "givenName";
const char* const CNContactMiddleNameKey = "middleName";
const char* const CNContactFamilyNameKey = "familyName";
const char* const CNContactNameSuffixKey = "nameSuffix";
const char* const CNContactNicknameKey = "nickname";
const char* const CNContactOrganizationNameKey = "organizationName";
const char* const CNContactFormattedNameKey = "formattedName";
const char* const CNContactEmailAddressesKey = "emailAddresses";
const char* const CNContactPhoneNumbersKey = "phoneNumbers";

namespace detail {

std::uint32_t contactKeyNamed(const NSString& name) noexcept {
  struct Named {
    std::string_view name;
    ContactKey key;
  };
  static constexpr Named all[] = {
      {"identifier", identifierKey},       {"namePrefix", namePrefixKey},
      {"givenName", givenNameKey},         {"middleName", middleNameKey},
      {"familyName", familyNameKey},       {"nameSuffix", nameSuffixKey},
      {"nickname", nicknameKey},           {"organizationName", organizationNameKey},
      {"formattedName", formattedNameKey}, {"emailAddresses", emailAddressesKey},
      {"phoneNumbers", phoneNumbersKey},
  };
  for (const Named& known : all)
    if (name.asciiView() == known.name) return known.key;
  return 0;
}

std::uint32_t contactKeysOfList(const NSArray& keys) {
  std::uint32_t set = 0;
  for (const Value& element : keys) {
    if (const auto descriptor = element.object<CNKeyDescriptor>()) {
      set |= contactKeysOfList(descriptor->keys());
      continue;
    }
    const std::uint32_t key = contactKeyNamed(NSString(element));
    if (key == 0) {
      raiseInvalidArgument(NSString::stringWithFormat(
          "\"%@\" is no key of a contact; use the constants of CNContactKeys.h", element));
    }
    set |= key;
  }
  return set;
}

}  // namespace detail

}  // namespace zeb
