#include <IDN/ArgumentsPrivate.h>
#include <IDN/UTFConversions.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>

#include <cstddef>
#include <span>
#include <string_view>

namespace zeb {

namespace {

/// Writes one by one up to the capacity.
template <class Element>
class Writer {
 public:
  Writer(Element* destination, std::int32_t* length) noexcept
      : begin_(destination), next_(destination), left_(*length), length_(length) {}

  [[nodiscard]] bool put(Element element) noexcept {
    if (left_ == 0) return false;
    *next_++ = element;
    --left_;
    return true;
  }
  [[nodiscard]] bool putUTF16(char32_t scalar) noexcept {
    if (scalar < 0x10000) return put(static_cast<Element>(scalar));
    return put(static_cast<Element>(0xD7C0 + (scalar >> 10))) &&
           put(static_cast<Element>(0xDC00 | (scalar & 0x3FF)));
  }
  XcodeResult finish() const noexcept {
    *length_ = static_cast<std::int32_t>(next_ - begin_);
    return XcodeOK;
  }

 private:
  Element* begin_;
  Element* next_;
  std::int32_t left_;
  std::int32_t* length_;
};

/// What is wrong with the malformed sequence at the start of the octets.
XcodeResult faultOfUTF8(std::span<const XcodeOctet> octets) noexcept {
  const unsigned lead = octets[0];
  if (lead > 0xF7) return XcodeUTF8LeadOctetTooLarge;
  if (lead < 0xC0) return XcodeUTF8BadOctet;
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  for (std::size_t i = 1; i < length; ++i) {
    if (i == octets.size()) return XcodeUTF8TruncatedOrOverlong;
    if ((octets[i] & 0xC0) != 0x80) return XcodeUTF8BadOctet;
  }
  const bool isOverlong =
      lead < 0xC2 || (lead == 0xE0 && octets[1] < 0xA0) || (lead == 0xF0 && octets[1] < 0x90);
  return isOverlong ? XcodeUTF8TruncatedOrOverlong : XcodeCodePointInvalid;
}

}  // namespace

XcodeResult Xcode_convertUTF16To32Bit(const XcodeUnit* units, std::int32_t count,
                                      XcodeCodePoint* codePoints, std::int32_t* length) noexcept {
  if (count == 0 || detail::isMissing(units, count, codePoints, length)) return XcodeBadArgument;
  Writer<XcodeCodePoint> writer(codePoints, length);
  for (std::int32_t i = 0; i < count; ++i) {
    XcodeCodePoint codePoint = units[i];
    if (detail::isSurrogate(units[i])) {
      const bool isPaired = detail::isHighSurrogate(units[i]) && i + 1 < count &&
                            detail::isLowSurrogate(units[i + 1]);
      if (!isPaired) return XcodeUTF16Invalid;
      codePoint = detail::scalarOfPair(units[i], units[i + 1]);
      ++i;
    }
    if (!writer.put(codePoint)) return XcodeOverflow;
  }
  return writer.finish();
}

XcodeResult Xcode_convert32BitToUTF16(const XcodeCodePoint* codePoints, std::int32_t count,
                                      XcodeUnit* units, std::int32_t* length) noexcept {
  if (detail::isMissing(codePoints, count, units, length)) return XcodeBadArgument;
  Writer<XcodeUnit> writer(units, length);
  for (std::int32_t i = 0; i < count; ++i) {
    const XcodeCodePoint codePoint = codePoints[i];
    const bool isSurrogate = codePoint >= 0xD800 && codePoint < 0xE000;
    if (codePoint > 0x10FFFF || isSurrogate) return XcodeCodePointInvalid;
    if (!writer.putUTF16(static_cast<char32_t>(codePoint))) return XcodeOverflow;
  }
  return writer.finish();
}

XcodeResult Xcode_convertUTF16ToUTF8(const XcodeUnit* units, std::int32_t count, XcodeOctet* octets,
                                     std::int32_t* length) noexcept {
  if (detail::isMissing(units, count, octets, length)) return XcodeBadArgument;
  const std::u16string_view text(units, static_cast<std::size_t>(count));
  Writer<XcodeOctet> writer(octets, length);
  for (std::size_t i = 0; i < text.size();) {
    const char32_t scalar = detail::nextScalar(text, i);
    if (scalar >= 0xD800 && scalar < 0xE000) return XcodeUTF8UnpairedSurrogate;
    const detail::EncodedScalar encoded = detail::encodeUTF8(scalar);
    for (const char byte : encoded.view()) {
      if (!writer.put(static_cast<XcodeOctet>(byte))) return XcodeOverflow;
    }
  }
  return writer.finish();
}

XcodeResult Xcode_convertUTF8ToUTF16(const XcodeOctet* octets, std::int32_t count, XcodeUnit* units,
                                     std::int32_t* length) noexcept {
  if (detail::isMissing(octets, count, units, length)) return XcodeBadArgument;
  const std::span all(octets, static_cast<std::size_t>(count));
  const std::string_view text(reinterpret_cast<const char*>(octets), all.size());
  Writer<XcodeUnit> writer(units, length);
  for (std::size_t i = 0; i < text.size();) {
    const detail::DecodedScalar decoded = detail::decodeUTF8(text.substr(i));
    if (!decoded.wellFormed) return faultOfUTF8(all.subspan(i));
    if (!writer.putUTF16(decoded.scalar)) return XcodeOverflow;
    i += decoded.length;
  }
  return writer.finish();
}

}  // namespace zeb
