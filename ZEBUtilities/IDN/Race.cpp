#include <IDN/ArgumentsPrivate.h>
#include <IDN/DnsCharacters.h>
#include <IDN/OctetStrings.h>
#include <IDN/Race.h>
#include <IDN/RaceBase32.h>

#include <algorithm>

namespace zeb {

namespace {

constexpr XcodeOctet marker = 0xD8;
constexpr XcodeOctet escape = 0xFF;
constexpr XcodeOctet escapedEscape = 0x99;
constexpr XcodeUnit reservedUnit = 0x0099;
constexpr XcodeUnit fullStop = u'.';

constexpr XcodeOctet rowOf(XcodeUnit unit) noexcept { return static_cast<XcodeOctet>(unit >> 8); }
constexpr XcodeOctet lowerOctet(XcodeUnit unit) noexcept {
  return static_cast<XcodeOctet>(unit & 0xFF);
}
constexpr bool isSurrogateRow(XcodeOctet row) noexcept { return (row & 0xF8) == 0xD8; }

/// The row for the compressed form, or the marker.
XcodeOctet commonRow(const XcodeUnit* units, std::int32_t count) noexcept {
  XcodeOctet row = 0;
  for (std::int32_t i = 0; i < count; ++i) {
    const XcodeOctet own = rowOf(units[i]);
    if (own == 0 || own == row) continue;
    if (row != 0 || isSurrogateRow(own)) return marker;
    row = own;
  }
  return row;
}

/// Reads the units of the row from the octets after the first one.
XcodeResult expandRow(XcodeOctet row, const XcodeOctet* octets, std::int32_t count,
                      XcodeUnit* units, std::int32_t* length) noexcept {
  const auto inRow = [row](XcodeOctet lower) { return static_cast<XcodeUnit>(row << 8 | lower); };
  const std::int32_t capacity = *length;
  std::int32_t written = 0;
  for (std::int32_t i = 0; i < count; ++i) {
    XcodeUnit unit = inRow(octets[i]);
    if (octets[i] == escape) {
      if (++i == count) return XcodeRaceCutEscape;
      if (octets[i] == escapedEscape) {
        unit = inRow(escape);
      } else if (row == 0) {
        return XcodeRaceBadEscape;
      } else {
        unit = octets[i];
      }
    }
    if (unit == fullStop || unit == reservedUnit) return XcodeRaceBadUnit;
    if (written == capacity) return XcodeOverflow;
    units[written++] = unit;
  }
  if (commonRow(units, written) != row) return XcodeRaceOtherRow;
  *length = written;
  return XcodeOK;
}

/// Reads the whole units after the marker.
XcodeResult expandUnits(const XcodeOctet* octets, std::int32_t count, XcodeUnit* units,
                        std::int32_t* length) noexcept {
  if (count % 2 != 0) return XcodeRaceOddOctets;
  const std::int32_t unitCount = count / 2;
  if (unitCount > *length) return XcodeOverflow;
  for (std::int32_t i = 0; i < unitCount; ++i) {
    units[i] = static_cast<XcodeUnit>(octets[2 * i] << 8 | octets[2 * i + 1]);
    if (units[i] == fullStop) return XcodeRaceBadUnit;
  }
  if (commonRow(units, unitCount) != marker) return XcodeRaceNeedsRow;
  *length = unitCount;
  return XcodeOK;
}

}  // namespace

XcodeResult Xcode_race_RaceCompress(const XcodeUnit* units, std::int32_t count, XcodeOctet* octets,
                                    std::int32_t* length) noexcept {
  if (count < 1 || detail::isMissing(units, count, octets, length)) return XcodeBadArgument;
  if (std::find(units, units + count, fullStop) != units + count) return XcodeRaceFullStop;
  const XcodeOctet row = commonRow(units, count);
  XcodeOctet* next = octets;
  XcodeOctet* const end = octets + std::min(*length, XcodeMaxRaceOctets);
  const XcodeResult tooLong = *length < XcodeMaxRaceOctets ? XcodeOverflow : XcodeRaceTooLong;
  const auto put = [&](XcodeOctet octet) {
    if (next == end) return false;
    *next++ = octet;
    return true;
  };

  if (!put(row)) return tooLong;
  for (const XcodeUnit* unit = units; unit != units + count; ++unit) {
    bool fits;
    if (row == marker) {
      fits = put(rowOf(*unit)) && put(lowerOctet(*unit));
    } else if (*unit == reservedUnit) {
      return XcodeRaceReservedUnit;
    } else if (rowOf(*unit) != row) {
      fits = put(escape) && put(lowerOctet(*unit));
    } else if (lowerOctet(*unit) == escape) {
      fits = put(escape) && put(escapedEscape);
    } else {
      fits = put(lowerOctet(*unit));
    }
    if (!fits) return tooLong;
  }
  *length = static_cast<std::int32_t>(next - octets);
  return XcodeOK;
}

XcodeResult Xcode_race_RaceDecompress(const XcodeOctet* octets, std::int32_t count,
                                      XcodeUnit* units, std::int32_t* length) noexcept {
  if (count < 1 || detail::isMissing(octets, count, units, length)) return XcodeBadArgument;
  if (count > XcodeMaxRaceOctets) return XcodeRaceTooLong;
  if (count == 1) return XcodeRaceNoUnits;
  if (octets[0] == marker) return expandUnits(octets + 1, count - 1, units, length);
  if (isSurrogateRow(octets[0])) return XcodeRaceBadRow;
  return expandRow(octets[0], octets + 1, count - 1, units, length);
}

XcodeResult Xcode_race_encodeString(const XcodeUnit* units, std::int32_t count, XcodeOctet* octets,
                                    std::int32_t* length, const XcodeOctet* prefix,
                                    std::int32_t prefixLength) noexcept {
  if (count < 1 || detail::isMissing(units, count, octets, length)) return XcodeBadArgument;
  if (detail::isMissing(prefix, prefixLength)) return XcodeBadArgument;
  const std::int32_t capacity = *length;
  if (std::all_of(units, units + count, valid_dns_character16)) {
    if (count >= capacity) return XcodeOverflow;
    octets[count] = 0;
    return shrink_UChar_to_Octet(units, count, octets, length);
  }
  if (prefixLength > capacity) return XcodeOverflow;
  std::copy_n(prefix, prefixLength, octets);
  XcodeOctet compressed[XcodeMaxRaceOctets];
  std::int32_t compressedLength = XcodeMaxRaceOctets;
  XcodeResult result = Xcode_race_RaceCompress(units, count, compressed, &compressedLength);
  if (result != XcodeOK) return result;
  std::int32_t lettersLength = capacity - prefixLength;
  result = Xcode_enbase32_race(compressed, compressedLength, octets + prefixLength, &lettersLength);
  if (result == XcodeOK) *length = prefixLength + lettersLength;
  return result;
}

XcodeResult Xcode_race_decodeString(const XcodeOctet* octets, std::int32_t count, XcodeUnit* units,
                                    std::int32_t* length, const XcodeOctet* prefix,
                                    std::int32_t prefixLength) noexcept {
  if (count < 1 || detail::isMissing(octets, count, units, length)) return XcodeBadArgument;
  if (detail::isMissing(prefix, prefixLength)) return XcodeBadArgument;
  if (!starts_with_ignore_case(octets, count, prefix, prefixLength)) {
    const bool isName = std::all_of(octets, octets + count, valid_dns_character8);
    return isName ? expand_Octet_to_UChar(octets, count, units, length) : XcodeBadArgument;
  }
  XcodeOctet compressed[XcodeMaxRaceOctets];
  std::int32_t compressedLength = XcodeMaxRaceOctets;
  XcodeResult result = Xcode_debase32_race(octets + prefixLength, count - prefixLength, compressed,
                                           &compressedLength);
  if (result != XcodeOK) return result;
  std::int32_t decodedLength = *length;
  result = Xcode_race_RaceDecompress(compressed, compressedLength, units, &decodedLength);
  if (result != XcodeOK) return result;
  if (std::all_of(units, units + decodedLength, valid_dns_character16)) return XcodeRaceNeedsNoRace;
  *length = decodedLength;
  return XcodeOK;
}

}  // namespace zeb
