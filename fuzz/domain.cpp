// Converts the input, as UTF-8 and as UTF-16 units, as a label and as a domain. What converts to
// ASCII is ASCII that stays as it is, and its Unicode form converts to the same ASCII.

#include <ZEBUtilities/IDN.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

using namespace zeb;

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

using Units = std::vector<XcodeUnit>;

std::int32_t countOf(const auto& elements) { return static_cast<std::int32_t>(elements.size()); }

/// What the function writes into a destination of exactly this capacity. False if it fails.
template <class Element>
bool convert(const auto& function, const Units& units, std::int32_t capacity, Units& result) {
  const std::unique_ptr<Element[]> destination(new Element[static_cast<std::size_t>(capacity)]);
  std::int32_t length = capacity;
  if (function(units.data(), countOf(units), destination.get(), &length) != XcodeOK) return false;
  require(length >= 0 && length <= capacity);
  result.assign(destination.get(), destination.get() + length);
  return true;
}

void checkLabel(const Units& label) {
  Units ascii, again, unicode;
  if (!convert<XcodeOctet>(Xcode_ToASCII, label, XcodeMaxLabelOctets, ascii)) return;
  require(std::ranges::all_of(ascii, valid_dns_character16) && !ascii.empty());
  require(countOf(ascii) <= XcodeMaxASCIILabelOctets);
  require(convert<XcodeOctet>(Xcode_ToASCII, ascii, XcodeMaxLabelOctets, again) && again == ascii);
  if (convert<XcodeUnit>(Xcode_ToUnicode16, ascii, XcodeMaxLabelUnits, unicode)) {
    require(convert<XcodeOctet>(Xcode_ToASCII, unicode, XcodeMaxLabelOctets, again));
    require(std::ranges::equal(again, ascii) ||
            (again.size() < ascii.size() && std::equal(again.begin(), again.end(), ascii.begin())));
  }
}

void checkDomain(const Units& domain) {
  Units ascii, again, unicode;
  const bool isUnicode =
      convert<XcodeUnit>(Xcode_DomainToUnicode16, domain, XcodeMaxDomainUnits, unicode);
  const auto isDelimiter = [](const XcodeUnit& unit) {
    return bool(Xcode_IsIDNADomainDelimiter(&unit));
  };
  const auto delimiters = std::ranges::count_if(domain, isDelimiter);
  if (isUnicode) require(std::ranges::count_if(unicode, isDelimiter) == delimiters);
  if (!convert<XcodeOctet>(Xcode_DomainToASCII, domain, XcodeMaxDomainUnits, ascii)) return;
  require(std::ranges::count(ascii, u'.') == delimiters);
  require(convert<XcodeOctet>(Xcode_DomainToASCII, ascii, XcodeMaxDomainUnits, again));
  require(again == ascii);
}

void check(const Units& units) {
  checkLabel(units);
  checkDomain(units);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 4096) return 0;
  Units units(size);
  std::int32_t length = countOf(units);
  if (Xcode_convertUTF8ToUTF16(data, countOf(units), units.data(), &length) == XcodeOK) {
    Units fromUTF8, fromUTF16(XcodeMaxDomainUnits);
    fromUTF8 = fromUTF16;
    std::int32_t lengths[] = {XcodeMaxDomainUnits, XcodeMaxDomainUnits};
    const auto code8 = Xcode_DomainToUnicode8(data, countOf(units), fromUTF8.data(), &lengths[0]);
    const auto code16 =
        Xcode_DomainToUnicode16(units.data(), length, fromUTF16.data(), &lengths[1]);
    // Only a text of many octets is too long as UTF-8 alone.
    if (countOf(units) <= XcodeMaxDomainUnits) require(code8 == code16 && fromUTF8 == fromUTF16);
    units.resize(static_cast<std::size_t>(length));
    check(units);
  }
  units.resize(size / 2);
  for (std::size_t i = 0; i < units.size(); ++i) {
    units[i] = static_cast<XcodeUnit>(data[2 * i] << 8 | data[2 * i + 1]);
  }
  check(units);
  return 0;
}
