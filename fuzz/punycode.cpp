// Decodes the input as Punycode and as RACE, and encodes its code points. What is decoded can be
// encoded again, and what is encoded decodes to the same. Destinations have exactly the stated
// capacity, so that a sanitizer detects a write beyond it.

#include <ZEBUtilities/IDN.h>

#include <cstdlib>
#include <memory>
#include <vector>

using namespace zeb;

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

/// What the call writes; empty and false if it fails.
template <class Element>
struct Output {
  Output(std::int32_t capacity, const auto& call)
      : elements(new Element[static_cast<std::size_t>(capacity)]), count(capacity) {
    succeeded = call(elements.get(), &count) == XcodeOK;
    require(count <= capacity && count >= 0);
  }
  bool equals(const auto* others, std::int32_t size) const {
    return succeeded && count == size && std::equal(others, others + size, elements.get());
  }
  std::unique_ptr<Element[]> elements;
  std::int32_t count;
  bool succeeded;
};

void checkDecoding(const XcodeOctet* octets, std::int32_t count) {
  const Output<XcodeCodePoint> decoded(count, [&](auto* codePoints, auto* length) {
    return punycode_decode(count, octets, length, codePoints);
  });
  if (decoded.succeeded && decoded.count <= XcodeMaxPunycodeCodePoints) {
    const Output<XcodeOctet> encoded(count + 1, [&](auto* result, auto* length) {
      return punycode_encode(decoded.count, decoded.elements.get(), length, result);
    });
    // Digits are written in lower case, and nothing else can differ.
    require(encoded.succeeded && encoded.count == count);
    require(starts_with_ignore_case(octets, count, encoded.elements.get(), count));
  }
  const std::int32_t capacity = count > 0 ? octets[0] : 0;
  Output<XcodeUnit>(capacity, [&](auto* units, auto* length) {
    return Xcode_puny_decodeString(octets, count, units, length);
  });

  const Output<XcodeUnit> units(count, [&](auto* result, auto* length) {
    return Xcode_race_RaceDecompress(octets, count, result, length);
  });
  if (!units.succeeded) return;
  const Output<XcodeOctet> compressed(count, [&](auto* result, auto* length) {
    return Xcode_race_RaceCompress(units.elements.get(), units.count, result, length);
  });
  require(compressed.equals(octets, count));
}

void checkEncoding(const std::vector<XcodeCodePoint>& codePoints) {
  const auto count = static_cast<std::int32_t>(codePoints.size());
  const Output<XcodeOctet> encoded(count * 8, [&](auto* octets, auto* length) {
    return punycode_encode(count, codePoints.data(), length, octets);
  });
  if (!encoded.succeeded) return;
  const Output<XcodeCodePoint> decoded(count, [&](auto* result, auto* length) {
    return punycode_decode(encoded.count, encoded.elements.get(), length, result);
  });
  require(decoded.equals(codePoints.data(), count));
}

void checkRace(const std::vector<XcodeUnit>& units) {
  const XcodeOctet prefix[] = {'b', 'q', '-', '-'};
  const auto count = static_cast<std::int32_t>(units.size());
  const Output<XcodeOctet> encoded(420, [&](auto* octets, auto* length) {
    return Xcode_race_encodeString(units.data(), count, octets, length, prefix, 4);
  });
  // A name that looks like an encoded label is not encoded, and does not decode to itself.
  if (!encoded.succeeded || encoded.count == count) return;
  const Output<XcodeUnit> decoded(count, [&](auto* result, auto* length) {
    return Xcode_race_decodeString(encoded.elements.get(), encoded.count, result, length, prefix,
                                   4);
  });
  require(decoded.equals(units.data(), count));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4096) return 0;
  checkDecoding(data, static_cast<std::int32_t>(size));
  // Numbers of up to 21 bits, whose arithmetic does not overflow.
  std::vector<XcodeCodePoint> codePoints;
  for (std::size_t i = 0; i + 3 <= size; i += 3) {
    codePoints.push_back(XcodeCodePoint{data[i]} << (data[i + 1] % 14) | data[i + 2]);
  }
  checkEncoding(codePoints);
  std::vector<XcodeUnit> units;
  for (std::size_t i = 0; i + 2 <= size; i += 2) {
    units.push_back(static_cast<XcodeUnit>(data[i] << 8 | data[i + 1]));
  }
  checkRace(units);
  return 0;
}
