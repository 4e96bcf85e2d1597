#include <ZEBPlatform/Foundation/detail/ArrayBuilder.h>
#include <ZEBPlatform/Geometry/NSValue.h>
#include <ZEBPlatform/Text/detail/StringUnits.h>
#include <ZEBUtilities/Text/HTMLReferencesPrivate.h>
#include <ZEBUtilities/Text/NSString+ZEBHTMLEntity.h>
#include <ZEBUtilities/Text/TextRangeAdjustmentPrivate.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace zeb {

namespace {

using References = std::span<const detail::HTMLReference>;

std::size_t unescapedLength(std::size_t length, References references) noexcept {
  const detail::HTMLReference& last = references.back();
  return length - last.shrinkBefore - last.shrink();
}

bool giveASCII(References references) noexcept {
  return std::ranges::all_of(references, [](const detail::HTMLReference& reference) {
    return reference.replacement < 0x80;
  });
}

/// Copies the units from `from` to `end`. The destination may be the text itself.
template <class Unit>
Unit* copyUnits(std::basic_string_view<Unit> text, std::size_t from, std::size_t end, Unit* to,
                const Unit* /*toEnd*/) noexcept {
  std::memmove(to, text.data() + from, (end - from) * sizeof(Unit));
  return to + (end - from);
}

char16_t* copyUnits(std::string_view text, std::size_t from, std::size_t end, char16_t* to,
                    const char16_t* toEnd) noexcept {
  // Through arrays of fixed length, which compilers convert with vectors. A block may go beyond
  // `end`: what is written there is overwritten later.
  constexpr std::size_t blockLength = 16;
  while (from < end && text.size() - from >= blockLength &&
         toEnd - to >= static_cast<std::ptrdiff_t>(blockLength)) {
    unsigned char bytes[blockLength];
    char16_t units[blockLength];
    std::memcpy(bytes, text.data() + from, sizeof bytes);
    for (std::size_t i = 0; i < blockLength; ++i) units[i] = bytes[i];
    std::memcpy(to, units, sizeof units);
    const std::size_t copied = std::min(blockLength, end - from);
    from += copied;
    to += copied;
  }
  return std::copy(text.data() + from, text.data() + end, to);
}

/// Writes the text with its references replaced, which then has `length` units. `to` may be the
/// text itself, because it never overtakes what is still to be read.
template <class Text, class To>
void writeUnescaped(Text text, References references, To* to, std::size_t length) noexcept {
  const To* toEnd = to + length;
  std::size_t copied = 0;
  for (const detail::HTMLReference& reference : references) {
    to = copyUnits(text, copied, reference.start, to, toEnd);
    if (reference.replacement < 0x10000) {
      *to++ = static_cast<To>(reference.replacement);
    } else if constexpr (sizeof(To) > 1) {
      *to++ = static_cast<To>(0xD7C0 + (reference.replacement >> 10));
      *to++ = static_cast<To>(0xDC00 + (reference.replacement & 0x3FF));
    }
    copied = reference.end;
  }
  copyUnits(text, copied, text.size(), to, toEnd);
}

void unescapeInPlace(detail::MutableStringStorage& text, References references) {
  const std::size_t length = unescapedLength(text.length, references);
  if (text.isWide()) {
    writeUnescaped(std::u16string_view(text.wide), references, text.wide.data(), length);
    text.wide.resize(length);
  } else if (giveASCII(references)) {
    writeUnescaped(std::string_view(text.narrow), references, text.narrow.data(), length);
    text.narrow.resize(length);
  } else {
    std::u16string units(length, u'\0');
    writeUnescaped(std::string_view(text.narrow), references, units.data(), length);
    text.wide = std::move(units);
    text.narrow = std::string();
    text.flags |= detail::StorageWide;
  }
  text.contentsChanged();
}

detail::HTMLReferences referencesIn(const NSString& string) {
  return detail::withUnits(string, [](auto text) { return detail::HTMLReferences(text); });
}

NSArray adjustedRanges(const NSArray& ranges, References references) {
  if (ranges.empty()) return ranges.copy();
  detail::TextRangeAdjustment adjustment(references);
  detail::ArrayBuilder adjusted(ranges.count());
  for (const Value& value : ranges) {
    const NSRange* range = unboxed<NSRange>(value);
    if (!range) {
      adjusted.append(value);
      continue;
    }
    const NSRange moved = adjustment.adjusted(*range);
    if (moved == *range) {
      adjusted.append(value);
    } else {
      adjusted.append(makeRef<NSValue>(moved));
    }
  }
  return adjusted.finish();
}

}  // namespace

NSMutableString zeb_stringByUnescapingHTMLEntities(const NSString& string) {
  const NSMutableString unescaped = string.mutableCopy();
  (void)zeb_unescapeHTMLEntitiesAdjustingTextRanges(unescaped, nullptr);
  return unescaped;
}

NSArray zeb_unescapeHTMLEntitiesAdjustingTextRanges(NSMutableString string, const NSArray& ranges) {
  if (string.isNil()) return nullptr;
  const detail::HTMLReferences found = referencesIn(string);
  const References references = found.list();
  if (references.empty()) return string.empty() ? ranges : ranges.copy();
  const NSArray adjusted = adjustedRanges(ranges, references);
  unescapeInPlace(*string.storageAs<detail::MutableStringStorage>(), references);
  return adjusted;
}

void zeb_unescapeHTMLEntitiesAdjustingTextRanges(NSMutableString string,
                                                 std::span<NSRange> ranges) {
  if (string.isNil()) return;
  const detail::HTMLReferences found = referencesIn(string);
  const References references = found.list();
  if (references.empty()) return;
  std::vector<NSRange> adjusted;
  adjusted.reserve(ranges.size());
  detail::TextRangeAdjustment adjustment(references);
  for (const NSRange range : ranges) adjusted.push_back(adjustment.adjusted(range));
  unescapeInPlace(*string.storageAs<detail::MutableStringStorage>(), references);
  std::ranges::copy(adjusted, ranges.begin());
}

}  // namespace zeb
