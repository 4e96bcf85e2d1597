// Uses the input as an escaped text and ranges. The result of unescaping is that of replacing one
// reference after the other. The text is also searched for composed character sequences, emoji and
// directions, whose results must fit together.
//
// The first byte says how many ranges follow, of two bytes each; the rest is the text, as UTF-8 or,
// if the first byte is odd, as 16-bit units.

#include <ZEBPlatform/Text/NSString+ComposedCharacters.h>
#include <ZEBUtilities/Text.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "UnescapingOneByOne.h"

using namespace zeb;

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

/// Values above 250 are near the ends of machine words.
std::size_t placeOf(std::uint8_t byte) {
  return byte > 250 ? (byte & 1 ? NSNotFound : ~std::size_t{byte}) : byte;
}

void checkSequences(const NSString& text) {
  std::size_t end = 0;
  bool isOnlyEmoji = true;
  enumerateComposedCharacterSequences(text, [&](NSRange sequence, bool&) {
    require(sequence.location == end && sequence.length > 0);
    end += sequence.length;
    require(rangeOfComposedCharacterSequenceAtIndex(text, end - 1) == sequence);
    isOnlyEmoji = isOnlyEmoji && zeb_containsOnlyEmoji(text.substringWithRange(sequence));
  });
  require(end == text.length());
  require(zeb_containsOnlyEmoji(text) == isOnlyEmoji);
}

void checkDirection(const NSString& text) {
  const NSString plain = zeb_stringByRemovingAllDirectionControlCharacters(text);
  require(zeb_plainTextShouldBeRenderedFromRight(plain) ==
          zeb_plainTextShouldBeRenderedFromRight(text));
  if (zeb_plainTextShouldBeRenderedFromRight(text)) require(zeb_containsRTLCharacters(text));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::span<const std::uint8_t> bytes(data, size);
  if (bytes.empty()) return 0;
  const bool isWide = bytes[0] & 1;
  std::size_t rangeCount = bytes[0] >> 1;
  bytes = bytes.subspan(1);
  std::vector<NSRange> ranges;
  for (; rangeCount > 0 && bytes.size() >= 2; --rangeCount, bytes = bytes.subspan(2)) {
    ranges.push_back({placeOf(bytes[0]), placeOf(bytes[1])});
  }
  NSString text(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
  if (isWide) {
    std::u16string units(bytes.size() / 2, u' ');
    if (!units.empty()) std::memcpy(units.data(), bytes.data(), units.size() * sizeof(char16_t));
    text = NSString(std::u16string_view(units));
  }
  require(test::isUnescapedAsOneByOne(text, ranges));
  checkSequences(text);
  checkDirection(text);
  return 0;
}
