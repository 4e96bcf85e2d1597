#include "Outcome.h"

namespace zeb::test {

using Case = std::pair<std::u16string, std::string>;

std::u16string many(std::size_t count, std::u16string text) { return repeated(count, text); }

TEST(Labels, ToASCII) {
  for (const auto& [label, expected] : {Case(u"bücher", "xn--bcher-kva"),
                                        Case(u"BÜCHER", "xn--bcher-kva"),
                                        Case(u"KeptCase", "KeptCase"),
                                        Case(u"ｗｗｗ", "www"),
                                        Case(u"-abc", "!301"),
                                        Case(u"abc-", "!301"),
                                        Case(u"-bü", "!301"),
                                        Case(u"a_b", "!300"),
                                        Case(u"bü cher", "!300"),
                                        Case(u"a．b", "!300"),
                                        Case(u"xn--bü", "!302"),
                                        Case(u"xn--bcher-kva", "xn--bcher-kva"),
                                        Case(u"xn--ｗ", "xn--w"),
                                        Case(many(63, u"a"), std::string(63, 'a')),
                                        Case(many(64, u"a"), "!303"),
                                        Case(many(60, u"ü"), "!303"),
                                        Case(many(129, u"a"), "!3"),
                                        Case(many(65, u"ß") + u"ü", "!3"),
                                        Case(many(128, u"\u00AD"), "!208"),
                                        Case(u"", "!1"),
                                        Case(u"\u06FE", "xn--rmb"),
                                        Case(u"a\xDC00", "!400"),
                                        Case(u"\uE000", "!201")})
    EXPECT_EQ(outcome<XcodeOctet>(Xcode_ToASCII, label, 256), expected);
  EXPECT_EQ(outcome<XcodeOctet>(Xcode_ToASCII, u"a", 255), "!3");
}

TEST(Labels, ToUnicode) {
  for (const auto& [label, expected] :
       {Case(u"xn--bcher-kva", "bücher"), Case(u"xn--BCHER-KVA", "!304"),
        Case(u"XN--bcher-kva", "!304"), Case(u"ｘｎ－－ｂｃｈｅｒ－ｋｖａ", "bücher"),
        Case(u"BÜCHER", "BÜCHER"), Case(u"KeptCase", "KeptCase"), Case(u"ＷＷＷ", "www"),
        Case(u"xn--x-", "x"), Case(u"xn--ab-", "!304"), Case(u"xn--bcher-kv", "!1"),
        Case(u"xn--a-0hc", "!203"), Case(u"xn--", "!1"), Case(u"a_b", "!300"),
        Case(many(64, u"a"), "!303"), Case(many(129, u"a"), "!3"), Case(u"a\xD800", "!400")})
    EXPECT_EQ(outcome<XcodeUnit>(Xcode_ToUnicode16, label, 128), expected);
  EXPECT_EQ(outcome<XcodeUnit>(Xcode_ToUnicode16, u"a", 127), "!3");
  EXPECT_EQ(outcome<XcodeUnit>(Xcode_ToUnicode8, "xn--bcher-kva", 128), "bücher");
  EXPECT_EQ(outcome<XcodeUnit>(Xcode_ToUnicode8, "\xC0\x80", 128), "!411");

  // What fails leaves the label.
  XcodeUnit units[XcodeMaxLabelUnits];
  std::int32_t length = XcodeMaxLabelUnits;
  EXPECT_EQ(Xcode_ToUnicode16(u"xn--BCHER-KVA", 13, units, &length), XcodeIdnaRoundTrip);
  EXPECT_EQ(std::u16string_view(units, static_cast<std::size_t>(length)), u"xn--BCHER-KVA");
}

TEST(Domains, EveryDelimiterIsAFullStop) {
  for (const auto& [domain, expected] :
       {Case(u"www.bücher.example", "www.xn--bcher-kva.example"), Case(u"..a..", "..a.."),
        Case(u"a。bü．c｡d.", "a.xn--b-eha.c.d."), Case(u".", "."), Case(u"ok.a_b.ok", "!300"),
        Case(many(341, u"ab。") + u"c", repeated(341, std::string("ab.")) + "c"),
        Case(many(512, u"ü."), "!3"), Case(many(1025, u"."), "!3"), Case(u"", "!1")})
    EXPECT_EQ(outcome<XcodeOctet>(Xcode_DomainToASCII, domain, 1024), expected);

  // A label that fails is left out. The full stops leave no room for a NUL.
  for (const auto& [domain, expected] :
       {Case(u"www.xn--bcher-kva.example", "www.bücher.example"), Case(u"a_b.c。", ".c."),
        Case(u"xn--BCHER-KVA.a", ".a"), Case(u"a.-", "a."), Case(u"\xD800.a", ".a"),
        Case(many(1024, u"."), std::string(1024, '.')), Case(many(1025, u"."), "!3"),
        Case(many(204, u"㎏㎏㎏㎏.") + u"㎏㎏㎏㎏", "!3")})
    EXPECT_EQ(outcome<XcodeUnit>(Xcode_DomainToUnicode16, domain, 1024), expected);
  EXPECT_EQ(outcome<XcodeUnit>(Xcode_DomainToUnicode16, u"a", 1023), "!3");
  const char* const utf8 = "xn--bcher-kva\u3002b\u00FC";
  EXPECT_EQ(outcome<XcodeUnit>(Xcode_DomainToUnicode8, utf8, 1024), "bücher.bü");
  EXPECT_EQ(outcome<XcodeUnit>(Xcode_DomainToUnicode8, "a.\xFF", 1024), "!410");

  EXPECT_FALSE(Xcode_IsIDNADomainDelimiter(nullptr));
  for (const char16_t unit : u"a\u3001\uFF0F") EXPECT_FALSE(Xcode_IsIDNADomainDelimiter(&unit));
}

}  // namespace zeb::test
