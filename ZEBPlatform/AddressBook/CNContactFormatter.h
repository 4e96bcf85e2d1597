#pragma once

#include <ZEBPlatform/AddressBook/CNContact.h>
#include <ZEBPlatform/AddressBook/CNContactKeys.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>

#include <cstdint>

namespace zeb {

enum CNContactFormatterStyle : std::int64_t {
  CNContactFormatterStyleFullName = 0,
};

/// Writes contacts' names as one text. Any thread.
///
/// A full name is made of the prefix, given name, middle name, family name and suffix that the
/// contact has:
///
/// - If the given and the family name (those of them that are there) consist of Han, kana,
///   bopomofo or Hangul characters alone, the order is prefix, family name, middle name, given
///   name, suffix, without spaces, in all locales: 山田太郎.
/// - Else, if the language of the current locale (`NSLocale::currentLocale`) is Hungarian or
///   Vietnamese, the order is the same, with spaces: Nagy Anna, Nguyễn Văn An.
/// - Else the order is prefix, given name, middle name, family name, suffix, with spaces. This
///   holds in Chinese, Japanese and Korean locales, too, where names in other scripts are those of
///   foreigners and keep the foreign order.
///
/// A contact without a given and a family name is called by the first of these that it has: its
/// formatted name, its nickname, its middle name with prefix and suffix, its organisation.
class CNContactFormatter final : public NSObject {
 public:
  /// The name; nil for a nil contact, for one that has no name, and for an unknown style. Throws
  /// NSException (CNContactPropertyNotFetchedExceptionName) if the keys that the style requires
  /// were not fetched.
  static NSString stringFromContact(const Ref<CNContact>& contact, CNContactFormatterStyle style);

  /// A formatter for many contacts. It keeps the language that the current locale has now, which
  /// saves looking it up for each contact.
  explicit CNContactFormatter(CNContactFormatterStyle style);
  NSString stringFromContact(const Ref<CNContact>& contact) const;

  /// The keys that `stringFromContact` needs, as an element for the list of keys to fetch.
  static Ref<CNKeyDescriptor> descriptorForRequiredKeysForStyle(CNContactFormatterStyle style);

 private:
  const CNContactFormatterStyle style_;
  const bool putsFamilyNameFirst_;
};

}  // namespace zeb
