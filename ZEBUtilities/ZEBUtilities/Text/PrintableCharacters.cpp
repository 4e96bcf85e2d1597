#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBUtilities/Text/NSString+ZEBAdditions.h>

#include <algorithm>

namespace zeb {

namespace {

Ref<NSCharacterSet> makeDefaultIgnorableSet() {
  const Ref<NSMutableCharacterSet> set = NSMutableCharacterSet::characterSet();
  set->addCharactersInString(NSString(u"\u00AD\u034F\u061C\u180E\u2065\u3164\uFEFF\uFFA0"));
  constexpr NSRange ranges[] = {{0x115F, 2}, {0x17B4, 2},  {0x180B, 3},  {0x200B, 5},
                                {0x202A, 5}, {0x2060, 5},  {0x2066, 10}, {0xFE00, 16},
                                {0xFFF0, 9}, {0x1BCA0, 4}, {0x1D173, 8}, {0xE0000, 4096}};
  for (const NSRange range : ranges) set->addCharactersInRange(range);
  return set->copy();
}

/// The characters that show nothing. One union takes one look instead of four.
const NSCharacterSet& unprintableSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set([] {
    const Ref<NSMutableCharacterSet> all =
        NSCharacterSet::whitespaceAndNewlineCharacterSet()->mutableCopy();
    all->formUnionWithCharacterSet(NSCharacterSet::controlCharacterSet());
    all->formUnionWithCharacterSet(NSCharacterSet::illegalCharacterSet());
    all->formUnionWithCharacterSet(DefaultIgnorableCodePointCharacterSet());
    return all->copy();
  }());
  return **set;
}

}  // namespace

const Ref<NSCharacterSet>& DefaultIgnorableCodePointCharacterSet() {
  static detail::NeverDestroyed<Ref<NSCharacterSet>> set(makeDefaultIgnorableSet());
  return *set;
}

bool containsPrintableCharacters(const char16_t* buffer, std::size_t length) {
  const NSCharacterSet& unprintable = unprintableSet();
  for (std::size_t index = 0; index < length; ++index) {
    const char16_t unit = buffer[index];
    if (!detail::isHighSurrogate(unit)) {
      if (!unprintable.characterIsMember(unit)) return true;
      continue;
    }
    ++index;  // also where the unit there is no low surrogate
    if (index < length && detail::isLowSurrogate(buffer[index]) &&
        !unprintable.longCharacterIsMember(detail::scalarOfPair(unit, buffer[index]))) {
      return true;
    }
  }
  return false;
}

bool zeb_containsPrintableCharacters(const NSString& string) {
  if (string.isASCII()) {
    const std::string_view bytes = string.asciiView();
    return std::any_of(bytes.begin(), bytes.end(),
                       [](char byte) { return byte > ' ' && byte < '\x7F'; });
  }
  const std::u16string_view units = string.utf16View();
  return containsPrintableCharacters(units.data(), units.size());
}

}  // namespace zeb
