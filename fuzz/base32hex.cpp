// Uses the input as data and as text of both codecs. The codecs agree with simple versions of
// themselves, also for data of two ranges and for text of 16-bit units.

#include <ZEBUtilities/Encodings.h>
#include <ZEBUtilities/Encodings/HexDigitsPrivate.h>

#include <cctype>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>

using namespace zeb;

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

/// The characters' values as one number of `count` times five bits, cut into bytes.
std::string decodedBase32(std::string_view text) {
  std::string bytes;
  unsigned bits = 0, bitCount = 0, count = 0;
  for (const char character : text) {
    unsigned value = 0;
    if (character >= 'A' && character <= 'Z') {
      value = static_cast<unsigned>(character - 'A');
    } else if (character >= '2' && character <= '7') {
      value = static_cast<unsigned>(character - '2') + 26;
    } else {
      continue;
    }
    ++count;
    bits = (bits << 5 | value) & 0xFFFF;
    bitCount += 5;
    if (bitCount < 8) continue;
    bitCount -= 8;
    bytes += static_cast<char>(bits >> bitCount);
  }
  // A single value at the end also gives the byte that it begins.
  if (count % 8 == 1) bytes += static_cast<char>(bits << (8 - bitCount));
  return bytes;
}

bool isHex(std::string_view text) {
  for (const char character : text)
    if (!std::isxdigit(static_cast<unsigned char>(character))) return false;
  return true;
}

void checkText(std::string_view text) {
  for (const char character : text)
    if (static_cast<signed char>(character) < 0) return;
  const NSString narrow(text);
  NSMutableString wide{NSString("é")};
  wide.appendString(narrow);
  wide.deleteCharactersInRange({0, 1});

  const std::string bytes = decodedBase32(text);
  require(dataWithBase32String(narrow).view() == bytes);
  require(dataWithBase32String(wide).view() == bytes);

  const NSData decoded = zeb_dataWithHexString(narrow);
  require(decoded.isNil() == (!isHex(text) || text.size() % 2 != 0));
  const NSData padded = zeb_dataWithHexString(wide);
  require(padded.isNil() == !isHex(text));
  if (!decoded.isNil()) require(decoded == padded);
}

void checkData(std::span<const std::byte> bytes) {
  const NSData data = NSData::dataWithBytesNoCopy(bytes, nullptr);
  const std::size_t place = bytes.size() / 3;
  const NSData parts[] = {NSData::dataWithBytes(bytes.first(place)),
                          NSData::dataWithBytes(bytes.subspan(place))};
  const NSData inParts = NSData::dataByJoining(parts);

  std::string digits(bytes.size() * 2, ' ');
  detail::encodeHexByByte(bytes, digits.data());
  require(zeb_hexStringValue(data) == NSString(digits));
  require(zeb_hexStringValue(inParts) == NSString(digits));
  require(zeb_dataWithHexString(NSString(digits)) == data);

  require(base32String(data) == base32String(inParts));
  require(base32String(data).length() == (bytes.size() + 4) / 5 * 8);
  require(zeb_UTF8String(data) == zeb_UTF8String(inParts));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::byte> bytes = std::as_bytes(std::span(data, size));
  checkData(bytes);
  checkText({reinterpret_cast<const char*>(data), size});
  return 0;
}
