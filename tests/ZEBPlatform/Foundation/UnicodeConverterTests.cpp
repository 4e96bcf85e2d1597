#include <ZEBPlatform/Foundation/detail/UnicodeConverter.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <string>

namespace zeb::test {

using namespace detail;

namespace {

/// Memory between two pages that must not be touched.
class GuardedMemory {
 public:
  GuardedMemory() {
    void* pages = mmap(nullptr, 3 * size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    start_ = static_cast<char*>(pages) + size;
    EXPECT_TRUE(pages != MAP_FAILED && mprotect(start_, size, PROT_READ | PROT_WRITE) == 0);
  }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;
  ~GuardedMemory() { munmap(start_ - size, 3 * size); }

  enum class Side { start, end };
  template <class Unit>
  Unit* room(std::size_t count, Side side) {
    return reinterpret_cast<Unit*>(side == Side::start ? start_
                                                       : start_ + size - count * sizeof(Unit));
  }
  /// A copy that ends or begins at a guard page.
  template <class Unit>
  std::basic_string_view<Unit> copy(std::basic_string_view<Unit> text, Side side) {
    Unit* const to = room<Unit>(text.size(), side);
    std::copy(text.begin(), text.end(), to);
    return {to, text.size()};
  }

 private:
  static constexpr std::size_t size = 4096;
  char* start_;
};

/// Whether a text begins with these units. Compares bytes, which is fast in builds for debugging.
bool beginsWith(std::u16string_view text, const char16_t* units, std::size_t count) {
  return count <= text.size() && std::memcmp(text.data(), units, count * sizeof(char16_t)) == 0;
}

/// Compares all converters with the plain one on one text.
class Comparison {
 public:
  void decode(std::string_view text) {
    std::u16string expected;
    appendUTF16(expected, text);
    TextProgress expectedPrefix;
    for (const UnicodeConverter* converter : converters_) {
      for (const auto side : {GuardedMemory::Side::start, GuardedMemory::Side::end}) {
        const std::string_view utf8 = source_.copy(text, side);
        char16_t* const units = target_.room<char16_t>(text.size(), side);
        const std::size_t count = converter->decode(utf8, units);
        ASSERT_TRUE(count == expected.size() && beginsWith(expected, units, count))
            << testing::PrintToString(text);
        const TextProgress prefix = converter->decodeWellFormed(utf8, units);
        if (converter == converters_.front()) expectedPrefix = prefix;
        ASSERT_EQ(prefix.read, expectedPrefix.read) << testing::PrintToString(text);
        ASSERT_TRUE(beginsWith(expected, units, prefix.written));
        ASSERT_EQ(prefix.read == text.size(), findMalformedUTF8(text) == text.npos);

        const std::string_view sound = source_.copy(text.substr(0, prefix.read), side);
        const std::size_t slack = UnicodeConverter::slack / sizeof(char16_t);
        char16_t* const raw = target_.room<char16_t>(sound.size() + slack, side);
        const TextProgress plain = converter->decodeUntilBackslash(sound, sound.size(), raw);
        ASSERT_EQ(plain.read, std::min(sound.size(), sound.find('\\')));
        ASSERT_TRUE(beginsWith(expected, raw, plain.written));
      }
    }
    encode(expected);
  }

  void encode(std::u16string_view text) {
    std::string expected;
    appendUTF8(expected, text);
    std::u16string back;
    appendUTF16(back, expected);
    ASSERT_TRUE(back.size() == text.size() && beginsWith(text, back.data(), back.size()));
    for (const auto slashes : {SlashEscapes::no, SlashEscapes::yes}) {
      TextProgress expectedPrefix;
      for (const UnicodeConverter* converter : converters_) {
        for (const auto side : {GuardedMemory::Side::start, GuardedMemory::Side::end}) {
          const std::u16string_view units = sourceUnits_.copy(text, side);
          ASSERT_EQ(converter->encodedLength(units), expected.size());
          char* const utf8 = target_.room<char>(expected.size(), side);
          ASSERT_EQ(converter->encode(units, utf8, expected.size()), expected.size());
          ASSERT_EQ(std::string(utf8, expected.size()), expected);
          char* const raw = target_.room<char>(3 * text.size() + UnicodeConverter::slack, side);
          const TextProgress prefix = converter->encodeUntilEscape(units, raw, slashes);
          if (converter == converters_.front()) expectedPrefix = prefix;
          ASSERT_EQ(prefix.read, expectedPrefix.read) << testing::PrintToString(text);
          ASSERT_EQ(std::string(raw, prefix.written), expected.substr(0, prefix.written));
        }
      }
    }
  }

 private:
  const std::vector<const UnicodeConverter*> converters_ = supportedUnicodeConverters();
  GuardedMemory source_, sourceUnits_, target_;
};

}  // namespace

TEST(UnicodeConverter, ConvertsEveryCodePointInEveryPlaceOfABlock) {
  Comparison comparison;
  std::u16string units;
  for (char32_t scalar = 0; scalar <= 0x10FFFF; ++scalar) {
    const bool isLastOfText = scalar % 61 == 60 || scalar == 0x10FFFF;
    if (scalar < 0x10000) {
      units += static_cast<char16_t>(scalar);
    } else {
      units += {static_cast<char16_t>(0xD7C0 + (scalar >> 10)),
                static_cast<char16_t>(0xDC00 + (scalar & 0x3FF))};
    }
    if (!isLastOfText) continue;
    std::string utf8;
    appendUTF8(utf8, units);
    comparison.decode(utf8);
    if (HasFatalFailure()) return;
    units.assign(scalar % 67, u'.');
  }
}

TEST(UnicodeConverter, FindsEveryMalformedSequenceInEveryPlaceOfABlock) {
  Comparison comparison;
  const std::string around = "\xD0\xB8\xE2\x82\xAC\xF0\x9F\x98\x80\xC3\xA9z";
  std::string text;
  unsigned count = 0;
  for (unsigned lead = 0x80; lead <= 0xFF; ++lead) {
    for (unsigned second = 0; second <= 0xFF; second += second < 0x70 || second > 0xC8 ? 0x11 : 1) {
      // The sequence lies at another place of the block each time, and is cut at another length.
      const std::string sequence = {static_cast<char>(lead), static_cast<char>(second),
                                    "\x80\xBF\x61\xE1\x90"[++count % 5], '\x90'};
      text.insert(0, 1, 'x');
      text += sequence + around.substr(0, lead % 13);
      comparison.decode(text);
      text.resize(text.size() - second % 5);
      comparison.decode(text);
      if (HasFatalFailure()) return;
      if (text.size() > 90) text.assign(second % 7, ' ');
    }
  }
}

TEST(UnicodeConverter, AgreesOnRandomTextsOfAllLengths) {
  Comparison comparison;
  std::mt19937 random(1);
  const std::u16string_view special = u"\\\"/\n\x1F a\xD83D\xDE00\xDFFF\u00E9\u07FF\u0800\u65E5";
  for (std::size_t round = 0; round < 6'000; ++round) {
    std::string bytes(round % 150, '\0');
    const bool isMostlyASCII = random() % 2;
    for (char& byte : bytes) byte = static_cast<char>(random() % (isMostlyASCII ? 130 : 256));
    comparison.decode(bytes);
    std::u16string units(round % 150, u'a');
    const std::size_t rarity = 1 + random() % 20;
    for (char16_t& unit : units) {
      if (random() % rarity == 0) unit = special[random() % special.size()];
    }
    comparison.encode(units);
    std::string utf8;
    appendUTF8(utf8, units);
    comparison.decode(utf8);
    if (HasFatalFailure()) return;
  }
}

}  // namespace zeb::test
