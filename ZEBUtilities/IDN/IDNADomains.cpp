#include <IDN/ArgumentsPrivate.h>
#include <IDN/IDNADomains.h>
#include <IDN/IDNALabels.h>
#include <IDN/UTFConversions.h>

#include <algorithm>

namespace zeb {

namespace {

/// A converted domain, which may not exceed the limit. The destination has room for that.
template <class Element>
class Domain {
 public:
  explicit Domain(Element* destination) noexcept : destination_(destination) {}

  bool append(const Element* elements, std::int32_t count) noexcept {
    if (count > XcodeMaxDomainUnits - length_) return false;
    std::copy_n(elements, count, destination_ + length_);
    length_ += count;
    return true;
  }
  std::int32_t length() const noexcept { return length_; }

 private:
  Element* destination_;
  std::int32_t length_ = 0;
};

/// Calls `convert` with each label that is not empty, and appends the delimiters.
template <class Element, class Convert>
XcodeResult convertLabels(const XcodeUnit* units, std::int32_t count, Domain<Element>& domain,
                          const Convert& convert) noexcept {
  constexpr Element fullStop = '.';
  const XcodeUnit* const end = units + count;
  const auto isDelimiter = [](const XcodeUnit& unit) { return Xcode_IsIDNADomainDelimiter(&unit); };
  for (const XcodeUnit* label = units;; ++label) {
    const XcodeUnit* const labelEnd = std::find_if(label, end, isDelimiter);
    if (labelEnd != label) {
      const XcodeResult result = convert(label, static_cast<std::int32_t>(labelEnd - label));
      if (result != XcodeOK) return result;
    }
    if (labelEnd == end) return XcodeOK;
    if (!domain.append(&fullStop, 1)) return XcodeOverflow;
    label = labelEnd;
  }
}

}  // namespace

bool Xcode_IsIDNADomainDelimiter(const XcodeUnit* unit) noexcept {
  if (unit == nullptr) return false;
  return *unit == u'.' || *unit == u'\u3002' || *unit == u'\uFF0E' || *unit == u'\uFF61';
}

XcodeResult Xcode_DomainToASCII(const XcodeUnit* units, std::int32_t count, XcodeOctet* octets,
                                std::int32_t* length) noexcept {
  XcodeResult result =
      detail::checkSizes(units, count, XcodeMaxDomainUnits, octets, length, XcodeMaxDomainUnits);
  if (result != XcodeOK) return result;
  Domain<XcodeOctet> domain(octets);
  result = convertLabels(units, count, domain, [&](const XcodeUnit* label, std::int32_t size) {
    XcodeOctet converted[XcodeMaxLabelOctets];
    std::int32_t convertedLength = XcodeMaxLabelOctets;
    const XcodeResult code = Xcode_ToASCII(label, size, converted, &convertedLength);
    if (code != XcodeOK) return code;
    return domain.append(converted, convertedLength) ? XcodeOK : XcodeOverflow;
  });
  if (result == XcodeOK) *length = domain.length();
  return result;
}

XcodeResult Xcode_DomainToUnicode16(const XcodeUnit* units, std::int32_t count, XcodeUnit* result,
                                    std::int32_t* length) noexcept {
  XcodeResult code =
      detail::checkSizes(units, count, XcodeMaxDomainUnits, result, length, XcodeMaxDomainUnits);
  if (code != XcodeOK) return code;
  Domain<XcodeUnit> domain(result);
  code = convertLabels(units, count, domain, [&](const XcodeUnit* label, std::int32_t size) {
    XcodeUnit converted[XcodeMaxLabelUnits];
    std::int32_t convertedLength = XcodeMaxLabelUnits;
    if (Xcode_ToUnicode16(label, size, converted, &convertedLength) != XcodeOK) return XcodeOK;
    return domain.append(converted, convertedLength) ? XcodeOK : XcodeOverflow;
  });
  if (code != XcodeOK) return code;
  if (domain.length() < *length) result[domain.length()] = 0;
  *length = domain.length();
  return XcodeOK;
}

XcodeResult Xcode_DomainToUnicode8(const XcodeOctet* octets, std::int32_t count, XcodeUnit* result,
                                   std::int32_t* length) noexcept {
  XcodeResult code =
      detail::checkSizes(octets, count, XcodeMaxDomainUnits, result, length, XcodeMaxDomainUnits);
  if (code != XcodeOK) return code;
  XcodeUnit units[XcodeMaxDomainUnits];
  std::int32_t unitCount = XcodeMaxDomainUnits;
  code = Xcode_convertUTF8ToUTF16(octets, count, units, &unitCount);
  return code != XcodeOK ? code : Xcode_DomainToUnicode16(units, unitCount, result, length);
}

}  // namespace zeb
