#include <IDN/AceLabelPrivate.h>
#include <IDN/ArgumentsPrivate.h>
#include <IDN/DnsCharacters.h>
#include <IDN/IDNALabels.h>
#include <IDN/Nameprep.h>
#include <IDN/Punycode.h>
#include <IDN/UTFConversions.h>

#include <algorithm>
#include <array>
#include <cstddef>

namespace zeb {

namespace {

/// The ASCII characters that the STD3 rules refuse.
constexpr std::array<bool, 128> forbiddenCharacters = [] {
  std::array<bool, 128> forbidden{};
  for (std::size_t c = 0; c < forbidden.size(); ++c) forbidden[c] = is_ldh_character32(c);
  return forbidden;
}();

/// What one walk over a label finds.
struct Scan {
  bool isASCII;
  bool isForbidden;  ///< by the STD3 rules, if it is ASCII
};

/// Also writes the label as octets, which are the label if it is ASCII. There is room for `count`.
template <class Element>
Scan scan(const Element* label, std::int32_t count, XcodeOctet* octets) noexcept {
  XcodeCodePoint bits = 0;
  bool isForbidden = false;
  for (std::int32_t i = 0; i < count; ++i) {
    bits |= label[i];
    isForbidden |= forbiddenCharacters[label[i] & 0x7F];
    octets[i] = static_cast<XcodeOctet>(label[i]);
  }
  return {bits < 0x80, isForbidden};
}

template <class Element>
bool hasHyphenAtEnd(const Element* label, std::int32_t count) noexcept {
  return label[0] == '-' || label[count - 1] == '-';
}

/// Checks and completes a label that `scan` has found to be ASCII and has written.
XcodeResult finishASCII(const Scan& scanned, std::int32_t count, XcodeOctet* octets,
                        std::int32_t* length) noexcept {
  if (scanned.isForbidden) return XcodeIdnaNonLDH;
  if (hasHyphenAtEnd(octets, count)) return XcodeIdnaHyphenEnds;
  if (count > XcodeMaxASCIILabelOctets) return XcodeIdnaLength;
  octets[count] = 0;
  *length = count;
  return XcodeOK;
}

/// Writes a prepared label that is not ASCII.
XcodeResult writeACE(const XcodeCodePoint* label, std::int32_t count, XcodeOctet* octets,
                     std::int32_t* length) noexcept {
  constexpr XcodeCodePoint acePrefix[] = {'x', 'n', '-', '-'};
  if (std::any_of(label, label + count, is_ldh_character32)) return XcodeIdnaNonLDH;
  if (hasHyphenAtEnd(label, count)) return XcodeIdnaHyphenEnds;
  if (count >= 4 && std::equal(acePrefix, acePrefix + 4, label)) return XcodeIdnaAlreadyACE;
  XcodeOctet encoded[XcodeEncodedLabelCapacity];
  std::int32_t encodedLength = 0;
  const XcodeResult result = detail::encodeAceLabel(label, count, encoded, &encodedLength);
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
  Scan scanned = scan(units, count, octets);
  if (scanned.isASCII) return finishASCII(scanned, count, octets, length);
  XcodeCodePoint prepared[XcodeMaxLabelCodePoints];
  std::int32_t preparedCount = XcodeMaxLabelCodePoints;
  result = Xcode_nameprepString(units, count, prepared, &preparedCount, nullptr);
  if (result != XcodeOK) return result;
  scanned = scan(prepared, preparedCount, octets);
  return scanned.isASCII ? finishASCII(scanned, preparedCount, octets, length)
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
  const Scan scanned = scan(units, count, octets);
  if (!scanned.isASCII) {
    XcodeCodePoint prepared[XcodeMaxPreparedCodePoints];
    octetCount = XcodeMaxPreparedCodePoints;
    code = Xcode_nameprepString(units, count, prepared, &octetCount, nullptr);
    if (code != XcodeOK) return code;
    if (!scan(prepared, octetCount, octets).isASCII) return XcodeOK;
  } else if (!detail::hasAcePrefix(units, count)) {
    // Such a label decodes to itself, so that only the rules of ToASCII are left to check.
    std::int32_t asciiLength = 0;
    return finishASCII(scanned, count, octets, &asciiLength);
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
