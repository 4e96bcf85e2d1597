#pragma once

#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBUtilities/IDN.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zeb::test {

inline std::string shown(std::span<const XcodeOctet> octets) {
  return {octets.begin(), octets.end()};
}
inline std::string shown(std::u16string_view units) {
  std::string text;
  detail::appendUTF8(text, units);
  return text;
}
inline std::string shown(std::span<const XcodeCodePoint> codePoints) {
  std::string text;
  for (const XcodeCodePoint c : codePoints) detail::appendUTF8(text, static_cast<char32_t>(c));
  return text;
}

inline std::u16string_view elements(std::u16string_view text) { return text; }
inline std::span<const XcodeOctet> elements(std::string_view text) {
  return {reinterpret_cast<const XcodeOctet*>(text.data()), text.size()};
}
inline std::vector<XcodeCodePoint> elements(std::u32string_view text) {
  return {text.begin(), text.end()};
}

template <class Text>
Text repeated(std::size_t count, const Text& text) {
  Text all;
  while (count-- > 0) all += text;
  return all;
}

/// What `function` writes into a destination of this capacity, as UTF-8, or "!" and its code. Also
/// expects that it writes nothing beyond: into guards, and into the end of a heap block, which
/// AddressSanitizer watches.
template <class Element>
std::string outcome(const auto& function, const auto& text, std::int32_t capacity, auto... more) {
  constexpr std::size_t guardCount = 8;
  constexpr Element guard = 0x5A;
  const auto source = elements(text);
  const auto size = static_cast<std::size_t>(capacity);
  std::string texts[2];
  for (const std::size_t guards : {guardCount, std::size_t{0}}) {
    // Not a vector, which has no place in memory while it is empty.
    const std::unique_ptr<Element[]> destination(new Element[size + guards]);
    std::fill_n(destination.get(), size + guards, guard);
    std::int32_t length = capacity;
    const XcodeResult result = function(source.data(), static_cast<std::int32_t>(source.size()),
                                        destination.get(), &length, more...);
    for (std::size_t i = size; i < size + guards; ++i) EXPECT_EQ(destination[i], guard) << i - size;
    EXPECT_LE(length, capacity);
    texts[guards == 0] = result == XcodeOK
                             ? shown({destination.get(), static_cast<std::size_t>(length)})
                             : "!" + std::to_string(result);
  }
  EXPECT_EQ(texts[0], texts[1]);
  return texts[0];
}

}  // namespace zeb::test
