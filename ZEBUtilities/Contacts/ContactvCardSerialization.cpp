#include <Contacts/ContactvCardSerialization.h>
#include <ZEBPlatform/Foundation/detail/DataBuilder.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Text/detail/StringUnits.h>

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace zeb {

namespace {

constexpr std::string_view start = "BEGIN:VCARD\r\nVERSION:4.0\r\n";
constexpr std::string_view end = "END:VCARD\r\n";
constexpr std::string_view nameProperty = "FN:";
constexpr std::string_view phoneProperty = "TEL;TYPE=voice;VALUE=uri:";
constexpr std::string_view mailProperty = "EMAIL;TYPE=internet:";
constexpr std::string_view extension = ";ext=";
constexpr std::string_view lineEnd = "\r\n";

template <class Unit>
constexpr bool isSeparator(Unit unit) noexcept {
  return unit == ';' || unit == ',';
}

/// The bytes that the line takes at most; exactly as many if the value is in ASCII.
std::size_t maxLength(std::string_view property, const NSString& value) {
  constexpr std::size_t maxBytesOfUnit = 3;  // a pair of units has four bytes
  const std::size_t bytesOfUnit = value.isASCII() ? 1 : maxBytesOfUnit;
  return property.size() + value.length() * bytesOfUnit + lineEnd.size();
}

std::size_t maxPhoneLength(const NSString& number) {
  const auto separators = detail::withUnits(number, [](auto units) {
    return std::ranges::count_if(units, isSeparator<typename decltype(units)::value_type>);
  });
  return maxLength(phoneProperty, number) +
         static_cast<std::size_t>(separators) * (extension.size() - 1);
}

/// The bytes of one vCard, written in one pass into memory of their length.
class VCardText {
 public:
  explicit VCardText(std::size_t maxLength) : bytes_(maxLength) {}

  void put(std::string_view ascii) noexcept { bytes_.put(ascii); }

  void putLine(std::string_view property, const NSString& value) noexcept {
    put(property);
    detail::withUnits(value, [this](auto units) { put(units); });
    put(lineEnd);
  }

  void putPhoneLine(const NSString& number) noexcept {
    put(phoneProperty);
    detail::withUnits(number, [this](auto units) { putPhoneNumber(units); });
    put(lineEnd);
  }

  NSData finish() { return isEncodable_ ? bytes_.finish() : nullptr; }

 private:
  void put(std::u16string_view units) noexcept {
    for (std::size_t index = 0; index < units.size();) {
      const char32_t character = detail::nextCharacter(units, index);
      isEncodable_ &= !(character <= 0xFFFF && detail::isSurrogate(char16_t(character)));
      bytes_.put(detail::encodeUTF8(character).view());
    }
  }

  template <class Units>
  void putPhoneNumber(Units units) noexcept {
    for (;;) {
      const auto separator =
          std::ranges::find_if(units, isSeparator<typename Units::value_type>) - units.begin();
      put(units.substr(0, static_cast<std::size_t>(separator)));
      if (separator == std::ssize(units)) return;
      put(extension);
      units.remove_prefix(static_cast<std::size_t>(separator) + 1);
    }
  }

  detail::DataBuilder bytes_;
  bool isEncodable_ = true;
};

}  // namespace

NSData ContactvCardSerialization::vCardBySerializingContact(const ZEBContact& contact) const {
  const NSString name = contact.fullName();
  const NSArray numbers = contact.phoneNumbers();
  const NSArray addresses = contact.emailAddresses();
  std::size_t length = start.size() + maxLength(nameProperty, name) + end.size();
  for (const Value& number : numbers) length += maxPhoneLength(NSString(number));
  for (const Value& address : addresses) length += maxLength(mailProperty, NSString(address));

  VCardText text(length);
  text.put(start);
  text.putLine(nameProperty, name);
  for (const Value& number : numbers) {
    if (number.isString()) text.putPhoneLine(NSString(number));
  }
  for (const Value& address : addresses) {
    if (address.isString()) text.putLine(mailProperty, NSString(address));
  }
  text.put(end);
  return text.finish();
}

}  // namespace zeb
