#include <Contacts/ContactvCardSerialization.h>
#include <ZEBPlatform/Foundation/detail/DataBuilder.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Text/detail/StringUnits.h>

#include <cstddef>
#include <string_view>

namespace zeb {

namespace {

/// The bytes of one vCard, written in one pass.
class VCardText {
 public:
  void append(std::string_view ascii) {
    bytes_.require(ascii.size());
    bytes_.put(ascii);
  }

  void append(std::u16string_view units) {
    constexpr std::size_t maxBytesOfUnit = 3;  // a pair of units has four bytes
    bytes_.require(units.size() * maxBytesOfUnit);
    for (std::size_t index = 0; index < units.size();) {
      const char32_t character = detail::nextCharacter(units, index);
      isEncodable_ &= !(character <= 0xFFFF && detail::isSurrogate(char16_t(character)));
      bytes_.put(detail::encodeUTF8(character).view());
    }
  }

  void appendLine(std::string_view property, const NSString& value) {
    append(property);
    detail::withUnits(value, [this](auto units) { append(units); });
    append("\r\n");
  }

  void appendPhoneLine(const NSString& number) {
    append("TEL;TYPE=voice;VALUE=uri:");
    detail::withUnits(number, [this](auto units) { appendPhoneNumber(units); });
    append("\r\n");
  }

  NSData finish() { return isEncodable_ ? bytes_.finish() : nullptr; }

 private:
  template <class Units>
  void appendPhoneNumber(Units units) {
    constexpr typename Units::value_type separators[] = {';', ',', 0};
    for (;;) {
      const std::size_t end = units.find_first_of(separators);
      append(units.substr(0, end));
      if (end == Units::npos) return;
      append(";ext=");
      units.remove_prefix(end + 1);
    }
  }

  detail::DataBuilder bytes_;
  bool isEncodable_ = true;
};

}  // namespace

NSData ContactvCardSerialization::vCardBySerializingContact(const ZEBContact& contact) const {
  VCardText text;
  text.append("BEGIN:VCARD\r\nVERSION:4.0\r\n");
  text.appendLine("FN:", contact.fullName());
  for (const Value& number : contact.phoneNumbers()) {
    if (number.isString()) text.appendPhoneLine(NSString(number));
  }
  for (const Value& address : contact.emailAddresses()) {
    if (address.isString()) text.appendLine("EMAIL;TYPE=internet:", NSString(address));
  }
  text.append("END:VCARD\r\n");
  return text.finish();
}

}  // namespace zeb
