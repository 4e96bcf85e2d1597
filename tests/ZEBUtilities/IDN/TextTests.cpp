#include "Outcome.h"

namespace zeb::test {

TEST(UTFConversions, RefuseWhatIsNotWellFormed) {
  const auto to8 = [](std::u16string_view text, std::int32_t capacity) {
    return outcome<XcodeOctet>(Xcode_convertUTF16ToUTF8, text, capacity);
  };
  const auto from8 = [](std::string_view text, std::int32_t capacity) {
    return outcome<XcodeUnit>(Xcode_convertUTF8ToUTF16, text, capacity);
  };
  const auto to32 = [](std::u16string_view text, std::int32_t capacity) {
    return outcome<XcodeCodePoint>(Xcode_convertUTF16To32Bit, text, capacity);
  };
  // All lengths, at exactly the capacity that they need, and at one less.
  const std::u16string_view units = u"aé€😀";
  const std::string octets = "aé€😀";
  EXPECT_EQ(to8(units, 10) + from8(octets, 5) + to32(units, 4), octets + octets + octets);
  EXPECT_EQ(to8(units, 9) + from8(octets, 4) + to32(units, 3), "!3!3!3");
  EXPECT_EQ(to8(u"", 0) + from8("", 0) + to32(u"", 9), "!1");
  for (const char16_t* text : {u"\xD800", u"\xDC00", u"a\xD800z", u"\xDC00\xD800"}) {
    EXPECT_EQ(to8(text, 9) + to32(text, 9), "!403!400");
  }
  using Case = std::pair<const char*, const char*>;
  for (const auto& [text, expected] :
       {Case("\x80", "!406"), Case("\xC3(", "!406"), Case("\xE2\x82(", "!406"),
        Case("\xF8", "!410"), Case("\xFF", "!410"), Case("\xC3", "!411"),
        Case("\xF0\x9F\x98", "!411"), Case("\xC0\x80", "!411"), Case("\xE0\x9F\xBF", "!411"),
        Case("\xF0\x8F\xBF\xBF", "!411"), Case("\xED\xA0\x80", "!401"),
        Case("\xF4\x90\x80\x80", "!401"), Case("\xF5\x80\x80\x80", "!401")})
    EXPECT_EQ(from8(text, 9), expected);
}

TEST(OctetStrings, KnowASCIIOnly) {
  std::string valid;
  for (XcodeCodePoint c = 0; c < 0x300; ++c) {
    if (valid_dns_character32(c)) valid += static_cast<char>(c);
    EXPECT_EQ(valid_dns_character16(static_cast<XcodeUnit>(c)), valid_dns_character32(c));
    EXPECT_EQ(is_ldh_character32(c), c < 0x80 && !valid_dns_character32(c));
  }
  EXPECT_EQ(valid, "-0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz");

  XcodeOctet text[] = {0xC1, '@', 'A', 'Z', '[', 'a'};
  const XcodeOctet prefix[] = {0xC1, '@', 'a'};
  EXPECT_TRUE(starts_with_ignore_case(text, 6, prefix, 3) && !starts_with(text, 6, prefix, 3));
  lower_case(text, 6);
  EXPECT_EQ(shown(text), "\xC1@az[a");
  EXPECT_TRUE(starts_with(text, 3, prefix, 3) && !starts_with_ignore_case(text, 2, prefix, 3));
  for (const auto& [units, expected] : {std::pair(u"ab", "ab"), {u"abc", "!3"}, {u"a\x80", "!1"}})
    EXPECT_EQ(outcome<XcodeOctet>(shrink_UChar_to_Octet, units, 2), expected);
}

}  // namespace zeb::test
