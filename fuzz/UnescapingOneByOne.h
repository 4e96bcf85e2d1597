#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Geometry/NSValue.h>
#include <ZEBUtilities/Text/NSString+ZEBAdditions.h>
#include <ZEBUtilities/Text/NSString+ZEBHTMLEntity.h>

#include <string>
#include <vector>

namespace zeb::test {

/// What the reference with this name stands for; empty if it stays.
inline std::u16string meaningOf(const std::u16string& name) {
  const auto text = [](std::u16string_view units) { return NSString(units); };
  if (!name.starts_with(u'#')) {
    const std::u16string reference = u'&' + name + u';';
    const std::u16string unescaped = zeb_stringByUnescapingHTMLEntities(text(reference)).utf16();
    return unescaped == reference ? u"" : unescaped;
  }
  std::uint64_t value = 0;
  const NSString digits = text(name).substringFromIndex(1);
  if (digits.hasPrefix("x") || digits.hasPrefix("X")) {
    const NSString hexadecimal = digits.substringFromIndex(1);
    if (zeb_containsOnlyHexNumbers(hexadecimal)) value = zeb_hexIntegerValue(hexadecimal);
  } else if (zeb_containsOnlyNumbers(digits)) {
    value = static_cast<std::uint64_t>(digits.intValue());
  }
  if (value < 0x20 || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) return u"";
  if (value < 0x10000) return {static_cast<char16_t>(value)};
  return {static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10)),
          static_cast<char16_t>(0xDC00 + ((value - 0x10000) & 0x3FF))};
}

/// Replaces one reference after the other, and adjusts all ranges each time: the definition of what
/// the library does in linear time.
inline void unescapeOneByOne(std::u16string& text, std::vector<NSRange>& ranges) {
  std::size_t start = 0;
  while ((start = text.find(u'&', start)) != text.npos) {
    const std::size_t semicolon = text.find(u';', start);
    if (semicolon == text.npos) return;
    const std::size_t end = semicolon + 1;
    const std::u16string name = text.substr(start + 1, semicolon - start - 1);
    // No reference contains another "&"; skipping such names keeps this fast enough for tests.
    const bool isName = !name.empty() && name.find(u'&') == name.npos;
    const std::u16string replacement = isName ? meaningOf(name) : u"";
    if (replacement.empty()) {
      ++start;
      continue;
    }
    text.replace(start, end - start, replacement);
    const std::size_t delta = replacement.size() - (end - start);  // modulo machine words
    for (NSRange& range : ranges) {
      const bool isInside = start >= range.location && end <= range.location + range.length;
      if (isInside) range.length += delta;
      if (!isInside && range.location >= end) range.location += delta;
    }
    start += replacement.size();
  }
}

/// Whether the library gives the same texts and ranges.
inline bool isUnescapedAsOneByOne(const NSString& text, std::vector<NSRange> ranges) {
  NSMutableArray boxes;
  for (const NSRange& range : ranges) boxes.addObject(boxed(range));
  NSMutableString changed(text);
  const NSArray adjusted = zeb_unescapeHTMLEntitiesAdjustingTextRanges(changed, boxes);
  const NSString unescaped = zeb_stringByUnescapingHTMLEntities(text);

  std::vector<NSRange> plainRanges = ranges;
  NSMutableString other(text);
  zeb_unescapeHTMLEntitiesAdjustingTextRanges(other, plainRanges);

  std::u16string units = text.utf16();
  unescapeOneByOne(units, ranges);
  bool isSame = changed.utf16() == units && unescaped.utf16() == units;
  isSame &= other == changed && plainRanges == ranges;
  for (std::size_t i = 0; i < ranges.size(); ++i) isSame &= adjusted[i] == boxed(ranges[i]);
  return isSame;
}

}  // namespace zeb::test
