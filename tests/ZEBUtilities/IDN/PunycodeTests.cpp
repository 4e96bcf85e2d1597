#include <cstring>

#include "Outcome.h"

namespace zeb::test {

std::string encoded(std::u32string_view text, std::int32_t capacity = 4000) {
  const auto encode = [](auto* codePoints, auto count, auto* octets, auto* length) {
    return punycode_encode(count, codePoints, length, octets);
  };
  return outcome<XcodeOctet>(encode, text, capacity);
}
std::string decoded(std::string_view text, std::int32_t capacity = 700) {
  const auto decode = [](auto* octets, auto count, auto* codePoints, auto* length) {
    return punycode_decode(count, octets, length, codePoints);
  };
  return outcome<XcodeCodePoint>(decode, text, capacity);
}

TEST(Punycode, ConvertsTheSamplesOfRFC3492BothWays) {
  using Sample = std::pair<std::u32string_view, const char*>;
  for (const auto& [text, punycode] :
       {Sample(U"ليهمابتكلموشعربي؟", "egbpdaj6bu4bxfgehfvwxn"),
        Sample(U"他们为什么不说中文", "ihqwcrb4cv8a8dqg056pqjye"),
        Sample(U"他們爲什麽不說中文", "ihqwctvzc91f659drss3x8bo0yb"),
        Sample(U"Pročprostěnemluvíčesky", "Proprostnemluvesky-uyb24dma41a"),
        Sample(U"למההםפשוטלאמדבריםעברית", "4dbcagdahymbxekheh6e0a7fei0b"),
        Sample(U"यहलोगहिन्दीक्योंनहींबोलसकतेहैं", "i1baa7eci9glrd9b2ae1bj0hfcgg6iyaf8o0a1dig0cd"),
        Sample(U"なぜみんな日本語を話してくれないのか", "n8jok5ay5dzabd5bym9f0cm5685rrjetr6pdxa"),
        Sample(U"세계의모든사람들이한국어를이해한다면얼마나좋을까",
               "989aomsvi5e83db1d2a355cv1e0vak1dwrv93d5xbh15a0dt30a5jpsd879ccm6fea98c"),
        Sample(U"почемужеонинеговорятпорусски", "b1abfaaepdrnnbgefbadotcwatmq2g4l"),
        Sample(U"PorquénopuedensimplementehablarenEspañol",
               "PorqunopuedensimplementehablarenEspaol-fmd56a"),
        Sample(U"TạisaohọkhôngthểchỉnóitiếngViệt", "TisaohkhngthchnitingVit-kjcr8268qyxafd2f1b9g"),
        Sample(U"3年B組金八先生", "3B-ww4c5e180e575a65lsy2b"),
        Sample(U"安室奈美恵-with-SUPER-MONKEYS", "-with-SUPER-MONKEYS-pc58ag80a8qai00g7n9n"),
        Sample(U"Hello-Another-Way-それぞれの場所", "Hello-Another-Way--fc4qua05auwb3674vfr0b"),
        Sample(U"ひとつ屋根の下2", "2-u9tlzr9756bt3uc0v"),
        Sample(U"MajiでKoiする5秒前", "MajiKoi5-783gue6qz075azm5e"),
        Sample(U"パフィーdeルンバ", "de-jg4avhby1noc0d"),
        Sample(U"そのスピードで", "d9juau41awczczp"), Sample(U"-> $1.00 <-", "-> $1.00 <--")}) {
    // Neither writes more than the result needs.
    const auto octets = static_cast<std::int32_t>(std::strlen(punycode));
    const auto codePoints = static_cast<std::int32_t>(text.size());
    EXPECT_EQ(encoded(text, octets) + encoded(text, octets - 1), punycode + std::string("!1"));
    EXPECT_EQ(decoded(punycode, codePoints), shown(elements(text))) << punycode;
    EXPECT_EQ(decoded(punycode, codePoints - 1), "!1");
  }
}

TEST(Punycode, RefusesWhatItCannotConvert) {
  // Digits of either case; a digit outside the alphabet, a cut number, a hyphen without basic code
  // points, an octet outside ASCII; numbers beyond 32 bits.
  for (const auto& [punycode, expected] : {std::pair("bcher-KVA", "bücher"),
                                           {"a-", "a"},
                                           {"", ""},
                                           {"bcher-k.a", "!1"},
                                           {"bcher-kv", "!1"},
                                           {"-kva", "!1"},
                                           {"b\xfc-kva", "!1"},
                                           {"99999999", "!3"}})
    EXPECT_EQ(decoded(punycode), expected) << punycode;
  EXPECT_EQ(encoded(std::u32string(64, U'a') + char32_t{0xFFFFFFF0}), "!3");
  EXPECT_EQ(encoded(std::u32string(XcodeMaxPunycodeCodePoints + 1, U'a')), "!3");
  const XcodeCodePoint beyond = std::uint64_t{1} << 32;
  std::int32_t length = 0;
  XcodeOctet octet;
  EXPECT_EQ(punycode_encode(1, &beyond, &length, &octet), XcodeOverflow);
  // Different and equal code points in each word of the encoder's set of places.
  std::u32string text;
  for (char32_t i = 0; i < 700; ++i) text += i % 5 == 0 ? U'x' : 0x80 + i * 7919 % 1500;
  EXPECT_EQ(decoded(encoded(text)), shown(elements(text)));
}

TEST(PunycodeLabels, HaveAPrefixAndLimits) {
  const auto label = [](std::u32string_view text) {
    return outcome<XcodeOctet>(Xcode_puny_encodeString, text, XcodeEncodedLabelCapacity);
  };
  EXPECT_EQ(label(U"") + label(U"Bücher"), "!1xn--Bcher-kva");
  EXPECT_EQ(label(std::u32string(128, U'a')), std::string(128, 'a'));
  EXPECT_EQ(label(std::u32string(129, U'a')), "!3");
  // Punycode of 252 octets fits, of up to 256 exceeds the label, and longer the internal buffer.
  for (const std::size_t size : {252u, 253u, 256u, 257u}) {
    std::u32string text;
    while (encoded(text).size() != size && text.size() < 128) {
      // Letters are worth one octet each, which closes the gap that other code points leave.
      text += encoded(text).size() + 10 > size ? U'a' : char32_t(0x3000 + text.size() * 9999);
    }
    ASSERT_EQ(encoded(text).size(), size);
    EXPECT_EQ(label(text), size == 252 ? "xn--" + encoded(text) : size > 256 ? "!1" : "!3");
  }
  XcodeOctet octets[XcodeEncodedLabelCapacity] = {};
  std::fill(std::begin(octets), std::end(octets), 'x');
  std::int32_t length = 100;
  EXPECT_EQ(Xcode_puny_encodeString(elements(U"é").data(), 1, octets, &length), XcodeOK);
  EXPECT_EQ(shown(std::span(octets, 101)), "xn--9ca" + std::string(93, '\0') + "x");

  // The last two are beyond Unicode and a surrogate.
  using Label = std::tuple<const char*, std::int32_t, const char*>;
  for (const auto& [text, capacity, expected] :
       {Label("XN--BCHER-KVA", 6, "bücher"), Label("xn--bcher-kva", 5, "!3"),
        Label("Plain", 5, "Plain"), Label("Plain", 4, "!3"), Label("", 5, "!1"),
        Label("xn--", 5, ""), Label("xn--bcher-kv", 9, "!1"), Label("xn--ls8h", 2, "💩"),
        Label("xn--ls8h", 1, "!3"), Label("xn--en32g", 9, "!401"), Label("xn--ib9b", 9, "!401")})
    EXPECT_EQ(outcome<XcodeUnit>(Xcode_puny_decodeString, text, capacity), expected) << text;
}

}  // namespace zeb::test
