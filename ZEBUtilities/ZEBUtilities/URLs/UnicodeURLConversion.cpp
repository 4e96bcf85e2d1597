#include <IDN/IDNADomains.h>
#include <ZEBPlatform/Foundation/ASCIICharacterSet.h>
#include <ZEBPlatform/Foundation/detail/JoinedText.h>
#include <ZEBPlatform/Url/NSString+PercentEncoding.h>
#include <ZEBUtilities/URLs/UnicodeURLConversion.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace zeb {

namespace {

constexpr ASCIICharacterSet allowedAfterHost =
    ASCIICharacterSet::URLFragmentAllowedCharacterSet() | ASCIICharacterSet("#[]");

/// Whether the label is an ASCII label that its Unicode form is equal to.
bool isPlainLabel(std::string_view label) noexcept {
  constexpr ASCIICharacterSet characters(
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-");
  constexpr std::size_t maxLength = 63;
  if (label.size() > maxLength || label.front() == '-' || label.back() == '-') return false;
  const bool hasPrefix = label.size() >= 4 && (label[0] | 0x20) == 'x' &&
                         (label[1] | 0x20) == 'n' && label[2] == '-' && label[3] == '-';
  return !hasPrefix && std::all_of(label.begin(), label.end(), [&](char character) {
    return characters.contains(static_cast<unsigned char>(character));
  });
}

/// Whether the domain in Unicode is the domain itself, because it has only such labels.
bool isPlainDomain(std::string_view domain) noexcept {
  if (domain.size() > XcodeMaxDomainUnits) return false;
  for (;;) {
    const std::size_t end = domain.find('.');
    const std::string_view label = domain.substr(0, end);
    if (!label.empty() && !isPlainLabel(label)) return false;
    if (end == std::string_view::npos) return true;
    domain.remove_prefix(end + 1);
  }
}

using Units = std::array<XcodeUnit, XcodeMaxDomainUnits>;

NSString domainInASCII(const NSString& domain, const Units& units, std::int32_t count) {
  std::array<XcodeOctet, XcodeMaxDomainUnits> octets;
  std::int32_t length = XcodeMaxDomainUnits;
  if (Xcode_DomainToASCII(units.data(), count, octets.data(), &length) != XcodeOK) return domain;
  return std::string_view(reinterpret_cast<const char*>(octets.data()),
                          static_cast<std::size_t>(length));
}

NSString domainInUnicode(const NSString& domain, const Units& units, std::int32_t count) {
  Units converted;
  std::int32_t length = XcodeMaxDomainUnits;
  if (Xcode_DomainToUnicode16(units.data(), count, converted.data(), &length) != XcodeOK) {
    return domain;
  }
  return std::u16string_view(converted.data(), static_cast<std::size_t>(length));
}

/// What follows the host, in its one form. Nil if it contains an unpaired surrogate.
NSString normalizedTail(const NSString& tail) {
  const NSString decoded = stringByRemovingPercentEncoding(tail);
  return stringByAddingPercentEncodingWithAllowedCharacters(decoded.isNil() ? tail : decoded,
                                                            allowedAfterHost);
}

struct HostPlace {
  std::size_t start;
  std::size_t end;
};

template <class View>
HostPlace hostPlaceIn(View text) noexcept {
  using Unit = typename View::value_type;
  constexpr Unit slashes[] = {'/', '/', 0};
  constexpr Unit authorityEnds[] = {'/', '?', '#', 0};
  std::size_t start = text.find(Unit{':'}) + 1;  // 0 if there is none
  const std::size_t doubleSlash = text.find(slashes, start);
  if (doubleSlash != View::npos) start = doubleSlash + 2;
  const std::size_t authorityEnd =
      (std::min)(text.find_first_of(authorityEnds, start), text.size());
  const View authority = text.substr(start, authorityEnd - start);
  const std::size_t userLength = authority.find(Unit{'@'}) + 1;
  const std::size_t colon = authority.find(Unit{':'}, userLength);
  return {start + userLength, start + (std::min)(colon, authority.size())};
}

template <class View>
NSString convertedURL(View text, bool toASCII) {
  const auto [start, end] = hostPlaceIn(text);
  const NSString host =
      ConvertUnicodeDomainString(NSString(text.substr(start, end - start)), toASCII);
  const NSString tail = normalizedTail(NSString(text.substr(end)));
  if (tail.isNil()) return nullptr;
  const NSString url = detail::joinedText({text.substr(0, start), host, tail});
  return url.empty() || !url.isWellFormed() ? NSString() : url;
}

}  // namespace

NSString ConvertUnicodeDomainString(const NSString& string, bool toASCII) {
  // In ASCII a domain of ASCII characters either stays as it is or cannot be converted.
  if (string.isASCII() && (toASCII || isPlainDomain(string.asciiView()))) return string;
  if (string.empty() || string.length() > XcodeMaxDomainUnits) return string;
  Units units;
  const auto wideEnd =
      std::copy(string.utf16View().begin(), string.utf16View().end(), units.begin());
  std::copy(string.asciiView().begin(), string.asciiView().end(), wideEnd);
  const auto count = static_cast<std::int32_t>(string.length());
  return toASCII ? domainInASCII(string, units, count) : domainInUnicode(string, units, count);
}

NSString ConvertUnicodeURLString(const NSString& string, bool toASCII) {
  if (string.isNil()) return nullptr;
  return string.isASCII() ? convertedURL(string.asciiView(), toASCII)
                          : convertedURL(string.utf16View(), toASCII);
}

}  // namespace zeb
