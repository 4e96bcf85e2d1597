#include <ZEBPlatform/AddressBook/CNContactFormatter.h>
#include <ZEBPlatform/Foundation/detail/JoinedText.h>
#include <ZEBPlatform/Text/NSLocale.h>

#include <algorithm>
#include <utility>

namespace zeb {

namespace {

struct Range {
  char32_t first;
  char32_t last;
};

/// The characters of names in Chinese, Japanese and Korean, with their marks.
constexpr Range eastAsian[] = {
    {0x1100, 0x11FF},    // Hangul letters
    {0x3005, 0x3007},    // marks of iteration and closing, zero
    {0x3040, 0x30FF},    // kana and the middle dot
    {0x3100, 0x312F},    // bopomofo
    {0x3130, 0x318F},    // Hangul letters
    {0x31A0, 0x31BF},    // bopomofo
    {0x31F0, 0x31FF},    // kana
    {0x3400, 0x4DBF},    // Han
    {0x4E00, 0x9FFF},    // Han
    {0xAC00, 0xD7FF},    // Hangul
    {0xF900, 0xFAFF},    // Han
    {0xFE00, 0xFE0F},    // selectors of variants
    {0xFF66, 0xFF9F},    // half-width kana
    {0x1AFF0, 0x1B16F},  // kana
    {0x20000, 0x3FFFF},  // Han
    {0xE0100, 0xE01EF},  // selectors of variants
};

bool isEastAsian(const NSString& text) {
  const std::u16string_view units = text.utf16View();
  for (std::size_t index = 0; index < units.size(); ++index) {
    char32_t scalar = units[index];
    const bool isPair = (scalar & 0xFC00) == 0xD800 && index + 1 < units.size();
    if (isPair) scalar = 0x10000 + ((scalar & 0x3FF) << 10) + (units[++index] & 0x3FFU);
    const auto contains = [&](Range range) {
      return range.first <= scalar && scalar <= range.last;
    };
    if (std::ranges::none_of(eastAsian, contains)) return false;
  }
  return text.empty() || !units.empty();
}

/// The parts that are not empty, with the separator between them.
NSString joined(const detail::TextPiece (&parts)[5], const char* separator) {
  bool isFirst = true;
  const auto before = [&](const detail::TextPiece& part) {
    return part.length() == 0 || std::exchange(isFirst, false) ? "" : separator;
  };
  const auto& [a, b, c, d, e] = parts;
  return detail::joinedText({before(a), a, before(b), b, before(c), c, before(d), d, before(e), e});
}

bool putsFamilyNameFirst() {
  const NSString language = NSLocale::currentLocale()->languageCode();
  return language == "hu" || language == "vi";
}

}  // namespace

CNContactFormatter::CNContactFormatter(CNContactFormatterStyle style)
    : style_(style), putsFamilyNameFirst_(putsFamilyNameFirst()) {}

NSString CNContactFormatter::stringFromContact(const Ref<CNContact>& contact,
                                               CNContactFormatterStyle style) {
  return CNContactFormatter(style).stringFromContact(contact);
}

NSString CNContactFormatter::stringFromContact(const Ref<CNContact>& contact) const {
  if (!contact || style_ != CNContactFormatterStyleFullName) return nullptr;
  const NSString& prefix = contact->namePrefix();
  const NSString& given = contact->givenName();
  const NSString& middle = contact->middleName();
  const NSString& family = contact->familyName();
  const NSString& suffix = contact->nameSuffix();
  const NSString& formatted = contact->formattedName();
  const NSString& nickname = contact->nickname();
  const NSString& organization = contact->organizationName();

  if (!given.empty() || !family.empty()) {
    if (isEastAsian(given) && isEastAsian(family))
      return joined({prefix, family, middle, given, suffix}, "");
    if (putsFamilyNameFirst_) return joined({prefix, family, middle, given, suffix}, " ");
    return joined({prefix, given, middle, family, suffix}, " ");
  }
  if (!formatted.empty()) return formatted;
  if (!nickname.empty()) return nickname;
  if (!middle.empty()) return joined({prefix, "", middle, "", suffix}, " ");
  return organization.empty() ? NSString() : organization;
}

Ref<CNKeyDescriptor> CNContactFormatter::descriptorForRequiredKeysForStyle(
    CNContactFormatterStyle) {
  return makeRef<CNKeyDescriptor>(NSArray{CNContactNamePrefixKey, CNContactGivenNameKey,
                                          CNContactMiddleNameKey, CNContactFamilyNameKey,
                                          CNContactNameSuffixKey, CNContactNicknameKey,
                                          CNContactOrganizationNameKey, CNContactFormattedNameKey});
}

}  // namespace zeb
