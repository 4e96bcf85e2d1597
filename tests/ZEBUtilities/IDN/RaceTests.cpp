#include "Outcome.h"

namespace zeb::test {

using namespace std::string_literals;

const XcodeOctet racePrefix[] = {'b', 'q', '-', '-'};

std::string race(std::u16string_view label, std::int32_t capacity) {
  return outcome<XcodeOctet>(Xcode_race_encodeString, label, capacity, racePrefix, 4);
}
std::string decodedRace(std::string_view text, std::int32_t capacity) {
  return outcome<XcodeUnit>(Xcode_race_decodeString, text, capacity, racePrefix, 4);
}
std::string compressed(std::u16string_view units, std::int32_t capacity = XcodeMaxRaceOctets) {
  return outcome<XcodeOctet>(Xcode_race_RaceCompress, units, capacity);
}
std::string decompressed(std::string_view octets) {
  return outcome<XcodeUnit>(Xcode_race_RaceDecompress, octets, 300);
}

TEST(Race, CompressesByRowsAndBack) {
  using Case = std::pair<std::u16string_view, std::string>;
  for (const auto& [units, octets] :
       {Case(u"hellô", "\0hell\xF4"s), Case(u"\u0431\u0442", "\x04\x31\x42"),
        Case(u"\u0431a\u04FF", "\x04\x31\xFF\x61\xFF\x99"), Case(u"a\u00FF", "\0a\xFF\x99"s),
        Case(u"\u00FF\u0431\u00FF", "\x04\xFF\xFF\x31\xFF\xFF"),
        Case(u"\u0431\u0499", "\x04\x31\x99"), Case(u"\u0431\u3042", "\xD8\x04\x31\x30\x42"),
        Case(u"\u0431\u3042\u0099", "\xD8\x04\x31\x30\x42\0\x99"s),
        Case(u"💩", "\xD8\xD8\x3D\xDC\xA9")}) {
    EXPECT_EQ(compressed(units), octets);
    EXPECT_EQ(decompressed(octets), shown(units));
  }
  EXPECT_EQ(compressed(u"a\u0099") + compressed(u"\u0431\u0099"), "!101!101");
  EXPECT_EQ(compressed(u"a.b") + compressed(u"\u0431\u0442", 2), "!103!3");
  EXPECT_EQ(compressed(std::u16string(255, u'\u0431')).size(), 256u);
  EXPECT_EQ(compressed(std::u16string(256, u'\u0431')), "!102");
}

TEST(Race, RefusesWhatCompressionDoesNotWrite) {
  using Case = std::pair<std::string, const char*>;
  for (const auto& [octets, expected] :
       {Case("\x04", "!110"), Case("\xDC\x31", "!111"), Case("\xD8\x04\x31\x30", "!112"),
        Case("\x04\x31\xFF", "!113"), Case("\0a\xFF\x62"s, "!114"), Case("\0a."s, "!115"),
        Case("\0\x99"s, "!115"), Case("\xD8\x04\x31\0.\x30\x42"s, "!115"),
        Case("\xD8\x04\x31\x04\x42", "!116"), Case("\x04\xFF\x61", "!117"),
        Case(std::string(257, '\x04'), "!102"), Case("", "!1")})
    EXPECT_EQ(decompressed(octets), expected);
}

TEST(Race, EncodesLabelsInBase32) {
  EXPECT_EQ(race(u"hellô", 14), "bq--abugk3dm6q");  // published
  for (std::int32_t capacity : {0, 3, 4, 13}) EXPECT_EQ(race(u"hellô", capacity), "!3");
  // A name needs room for a NUL.
  EXPECT_EQ(race(u"Plain-1", 8) + race(u"Plain-1", 7) + race(u"", 8), "Plain-1!3!1");

  // No letter; a left-over bit; a left-over letter; "a", which is not encoded.
  using Case = std::pair<const char*, const char*>;
  for (const auto& [text, expected] :
       {Case("BQ--ABUGK3DM6Q", "hellô"), Case("Plain-1", "Plain-1"), Case("a_b", "!1"),
        Case("", "!1"), Case("bq--", "!1"), Case("bq--abugk3dm61", "!151"),
        Case("bq--abugk3dm6r", "!151"), Case("bq--abugk3dm6qa", "!151"), Case("bq--abqq", "!118")})
    EXPECT_EQ(decodedRace(text, 7), expected) << text;
  EXPECT_EQ(decodedRace("bq--abugk3dm6q", 4), "!3");
  for (unsigned value = 0; value < 256; ++value) {
    const XcodeOctet letter = Xcode_enmap32_race(static_cast<XcodeOctet>(value));
    EXPECT_EQ(value < 32 ? Xcode_demap32_race(letter) : letter, value < 32 ? value : 255);
  }
}

}  // namespace zeb::test
