// Prepares the input, as UTF-8 and as UTF-16 units. A prepared text has no prohibited code point,
// keeps its directions' rules and, except for what RFC 3454 maps before it normalizes, does not
// change when it is prepared again.

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

using CodePoints = std::vector<XcodeCodePoint>;

std::int32_t countOf(const auto& elements) { return static_cast<std::int32_t>(elements.size()); }

/// What the call writes into a destination of exactly this capacity; empty if it fails.
CodePoints written(std::int32_t capacity, const auto& call) {
  const std::unique_ptr<XcodeCodePoint[]> destination(
      new XcodeCodePoint[static_cast<std::size_t>(capacity)]);
  std::int32_t length = capacity;
  if (call(destination.get(), &length) != XcodeOK) return {};
  require(length > 0 && length <= capacity);
  return {destination.get(), destination.get() + length};
}

CodePoints normalized(const CodePoints& text) {
  return written(XcodeMaxPreparedCodePoints, [&](auto* result, auto* length) {
    return Xcode_normalizeString(text.data(), countOf(text), result, length);
  });
}

void check(const std::vector<XcodeUnit>& units, std::int32_t capacity) {
  const CodePoints prepared = written(capacity, [&](auto* result, auto* length) {
    return Xcode_nameprepString(units.data(), countOf(units), result, length, nullptr);
  });
  if (prepared.empty()) return;
  require(Xcode_prohibitString(prepared.data(), countOf(prepared), nullptr) == XcodeOK);
  require(Xcode_bidifilterString(prepared.data(), countOf(prepared)) == XcodeOK);

  // The steps one by one give the same, though they take no short cut.
  CodePoints codePoints = written(XcodeMaxPreparedCodePoints, [&](auto* result, auto* length) {
    return Xcode_convertUTF16To32Bit(units.data(), countOf(units), result, length);
  });
  const CodePoints mapped = written(XcodeMaxPreparedCodePoints, [&](auto* result, auto* length) {
    return Xcode_charmapString(codePoints.data(), countOf(codePoints), result, length);
  });
  require(normalized(mapped) == prepared);
  const CodePoints again = normalized(prepared);
  require(again == prepared || again.empty());  // empty: too long when decomposed
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0 || size > 4096) return 0;
  std::vector<XcodeUnit> units(size);
  std::int32_t length = countOf(units);
  if (Xcode_convertUTF8ToUTF16(data, countOf(units), units.data(), &length) == XcodeOK) {
    std::vector<XcodeOctet> octets(size);
    std::int32_t octetCount = countOf(octets);
    require(Xcode_convertUTF16ToUTF8(units.data(), length, octets.data(), &octetCount) == XcodeOK);
    require(octetCount == countOf(octets) && std::equal(data, data + size, octets.data()));
    units.resize(static_cast<std::size_t>(length));
    check(units, XcodeMaxPreparedCodePoints);
    check(units, data[0]);
  }
  units.resize(size / 2);
  for (std::size_t i = 0; i < units.size(); ++i) {
    units[i] = static_cast<XcodeUnit>(data[2 * i] << 8 | data[2 * i + 1]);
  }
  check(units, XcodeMaxPreparedCodePoints);
  return 0;
}
