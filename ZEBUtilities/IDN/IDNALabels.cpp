#include <IDN/AceLabelPrivate.h>
#include <IDN/ArgumentsPrivate.h>
#include <IDN/DnsCharacters.h>
#include <IDN/IDNALabels.h>
#include <IDN/Nameprep.h>
#include <IDN/Punycode.h>
#include <IDN/UTFConversions.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace zeb {

namespace {

bool isASCII(const XcodeUnit* units, std::int32_t count) noexcept {
  return detail::isASCII(std::u16string_view(units, static_cast<std::size_t>(count)));
}

template <class Element>
XcodeResult checkSTD3Rules(const Element* label, std::int32_t count) noexcept {
  bool isForbidden = false;
  for (std::int32_t i = 0; i < count; ++i) isForbidden |= is_ldh_character32(label[i]);
  if (isForbidden) return XcodeIdnaNonLDH;
  return label[0] == '-' || label[count - 1] == '-' ? XcodeIdnaHyphenEnds : XcodeOK;
}

/// Writes a label that is ASCII.
template <class Element>
XcodeResult writeASCII(const Element* label, std::int32_t count, XcodeOctet* octets,
                       std::int32_t* length) noexcept {
  const XcodeResult result = checkSTD3Rules(label, count);
  if (result != XcodeOK) return result;
  if (count > XcodeMaxASCIILabelOctets) return XcodeIdnaLength;
  for (std::int32_t i = 0; i < count; ++i) octets[i] = static_cast<XcodeOctet>(label[i]);
  octets[count] = 0;
  *length = count;
  return XcodeOK;
}

/// Writes a prepared label that is not ASCII.
XcodeResult writeACE(const XcodeCodePoint* label, std::int32_t count, XcodeOctet* octets,
                     std::int32_t* length) noexcept {
  constexpr XcodeCodePoint acePrefix[] = {'x', 'n', '-', '-'};
  XcodeResult result = checkSTD3Rules(label, count);
  if (result != XcodeOK) return result;
  if (count >= 4 && std::equal(acePrefix, acePrefix + 4, label)) return XcodeIdnaAlreadyACE;
  XcodeOctet encoded[XcodeEncodedLabelCapacity];
  std::int32_t encodedLength = 0;
  result = detail::encodeAceLabel(label, count, encoded, &encodedLength);
  if (result != XcodeOK) return result;
  if (encodedLength > XcodeMaxASCIILabelOctets) return XcodeIdnaLength;
  std::copy_n(encoded, encodedLength + 1, octets);
  *length = encodedLength;
  return XcodeOK;
}

}  // namespace

XcodeResult Xcode_ToASCII(const XcodeUnit* units, std::int32_t count, XcodeOctet* octets,
                          std::int32_t* length) noexcept {
  XcodeResult result =
      detail::checkSizes(units, count, XcodeMaxLabelUnits, octets, length, XcodeMaxLabelOctets);
  if (result != XcodeOK) return result;
  if (isASCII(units, count)) return writeASCII(units, count, octets, length);
  XcodeCodePoint prepared[XcodeMaxLabelCodePoints];
  std::int32_t preparedCount = XcodeMaxLabelCodePoints;
  result = Xcode_nameprepString(units, count, prepared, &preparedCount, nullptr);
  if (result != XcodeOK) return result;
  return is_all_basic(preparedCount, prepared) ? writeASCII(prepared, preparedCount, octets, length)
                                               : writeACE(prepared, preparedCount, octets, length);
}

XcodeResult Xcode_ToUnicode16(const XcodeUnit* units, std::int32_t count, XcodeUnit* result,
                              std::int32_t* length) noexcept {
  XcodeResult code =
      detail::checkSizes(units, count, XcodeMaxLabelUnits, result, length, XcodeMaxLabelUnits);
  if (code != XcodeOK) return code;
  std::copy_n(units, count, result);
  *length = count;

  XcodeOctet octets[XcodeMaxPreparedCodePoints];
  std::int32_t octetCount = count;
  if (isASCII(units, count)) {
    for (std::int32_t i = 0; i < count; ++i) octets[i] = static_cast<XcodeOctet>(units[i]);
  } else {
    XcodeCodePoint prepared[XcodeMaxPreparedCodePoints];
    octetCount = XcodeMaxPreparedCodePoints;
    code = Xcode_nameprepString(units, count, prepared, &octetCount, nullptr);
    if (code != XcodeOK) return code;
    if (!is_all_basic(octetCount, prepared)) return XcodeOK;
    for (std::int32_t i = 0; i < octetCount; ++i) octets[i] = static_cast<XcodeOctet>(prepared[i]);
  }

  XcodeUnit decoded[XcodeMaxPreparedCodePoints];
  std::int32_t decodedCount = XcodeMaxPreparedCodePoints;
  code = Xcode_puny_decodeString(octets, octetCount, decoded, &decodedCount);
  if (code != XcodeOK) return code;
  XcodeOctet encoded[XcodeMaxLabelOctets];
  std::int32_t encodedLength = XcodeMaxLabelOctets;
  code = Xcode_ToASCII(decoded, decodedCount, encoded, &encodedLength);
  if (code != XcodeOK) return code;
  const bool isSame =
      encodedLength <= octetCount && std::equal(encoded, encoded + encodedLength, octets);
  if (!isSame) return XcodeIdnaRoundTrip;
  // At most XcodeMaxLabelUnits, because ToASCII accepts no more.
  std::copy_n(decoded, decodedCount, result);
  *length = decodedCount;
  return XcodeOK;
}

XcodeResult Xcode_ToUnicode8(const XcodeOctet* octets, std::int32_t count, XcodeUnit* result,
                             std::int32_t* length) noexcept {
  XcodeResult code =
      detail::checkSizes(octets, count, XcodeMaxLabelOctets, result, length, XcodeMaxLabelUnits);
  if (code != XcodeOK) return code;
  XcodeUnit units[XcodeMaxLabelOctets];
  std::int32_t unitCount = XcodeMaxLabelOctets;
  code = Xcode_convertUTF8ToUTF16(octets, count, units, &unitCount);
  return code != XcodeOK ? code : Xcode_ToUnicode16(units, unitCount, result, length);
}

}  // namespace zeb
