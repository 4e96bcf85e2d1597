#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBUtilities/Encodings.h>
#include <ZEBUtilities/Encodings/HexDigitsPrivate.h>

#include "Support/LogRecorder.h"
#include "Support/Support.h"

// The fuzz target base32hex, whose inputs the tests replay, compares these functions with simple
// versions of themselves.
namespace zeb::test {

NSData dataOf(std::string_view bytes) { return NSData::dataWithBytes(bytes); }

/// The same bytes in ranges of growing lengths, some of them joined twice.
NSData scattered(std::string_view bytes) {
  std::vector<NSData> parts;
  for (std::size_t length = 1; !bytes.empty(); ++length) {
    parts.push_back(dataOf(bytes.substr(0, length)));
    bytes.remove_prefix(std::min(length, bytes.size()));
    if (length % 4 == 0) parts = {NSData::dataByJoining(parts)};
  }
  return NSData::dataByJoining(parts);
}

/// Digits in 16-bit units, because the text has once contained another character.
NSMutableString wide(const char* digits) {
  NSMutableString text{NSString("é")};
  text.appendUTF8(digits);
  text.deleteCharactersInRange({0, 1});
  return text;
}

std::string shown(const NSString& text) { return text.isNil() ? "nil" : text.utf8(); }
std::string shown(const NSData& data) { return data.isNil() ? "nil" : std::string(data.view()); }

using Lines = std::vector<std::string>;

const std::string channelAndFile =
    "|ZEBUtilitiesPerformance|ZEBUtilities/ZEBUtilities/NSData+ZlibAdditions|";
const std::string compression = "-[NSData(ZlibAdditions) zeb_gzipCompress:]";
const std::string failedInflation =
    "3" + channelAndFile + "-[NSData(ZlibAdditions) zeb_gzipDecompress]|ZLib Decompress Error!";

std::string noise(std::size_t length) {
  std::mt19937 random(1);
  std::string bytes(length, ' ');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

NSData cut(std::string_view bytes, std::size_t place) {
  const NSData parts[] = {dataOf(bytes.substr(0, place)), dataOf(bytes.substr(place))};
  return NSData::dataByJoining(parts);
}

using Texts = std::pair<NSString, std::string>;

TEST(Digests, AreThePublishedOnes) {
  const std::string million(1'000'000, 'a');
  const std::tuple<NSData (*)(const NSData&), const char*, std::string> vectors[] = {
      {zeb_MD2Hash, "8350e5a3e24c153df2275c9f80692773", "da853b0d3f88d99b30283a69e6ded6bb"},
      {zeb_MD4Hash, "31d6cfe0d16ae931b73c59d7e0c089c0", "a448017aaf21d8525fc10ae87aa6729d"},
      {zeb_MD5Hash, "d41d8cd98f00b204e9800998ecf8427e", "7707d6ae4e027c70eea2a935c2296f21"},
      {zeb_SHA1Hash, "da39a3ee5e6b4b0d3255bfef95601890afd80709",
       "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
      {zeb_SHA256Hash, "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855",
       "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
      {zeb_SHA512Hash,
       "cf83e1357eefb8bdf1542850d66d8007d620e4050b5715dc83f4a921d36ce9ce"
       "47d0d13c5d85f2b0ff8318d2877eec2f63b931bd47417a81a538327af927da3e",
       "e718483d0ce769644e2e42c7bc15b4638e1f98b13b2044285632a803afa973eb"
       "de0ff244877ea60a4cb0432ce577c31beb009c5c2c49aa2e4eadb217ad8cc09b"},
  };
  for (const auto& [digest, ofNothing, ofText] : vectors) {
    // Short texts are given to one outside library, long ones to another one.
    const std::string text = digest == zeb_MD2Hash || digest == zeb_MD4Hash ? "abc" : million;
    EXPECT_EQ(zeb_hexStringValue(digest(NSData::data())), ofNothing);
    EXPECT_EQ(zeb_hexStringValue(digest(scattered(text))), NSString(ofText));
    EXPECT_TRUE(digest(nullptr).isNil());
  }
}

TEST(Hex, BlocksAndSingleBytesAgreeOnEveryCharacterAndPlace) {
  std::string digits(48, '7');
  std::vector<std::byte> decoded(24), byByte(24);
  for (char& digit : digits) {
    for (int character = 0; character < 256; ++character) {
      digit = static_cast<char>(character);
      const bool isHex = detail::decodeHexByByte(digits.data(), byByte);
      ASSERT_EQ(isHex, character < 128 && std::isxdigit(character)) << character;
      ASSERT_EQ(detail::decodeHex(digits.data(), decoded), isHex) << character;
      ASSERT_TRUE(!isHex || decoded == byByte) << character;
    }
    digit = '7';
  }
  EXPECT_EQ(shown(zeb_hexStringValue(dataOf({"\0\xff", 2}))) +
                shown(zeb_hexStringValue(NSData::data())) + shown(zeb_hexStringValue(nullptr)),
            "00ffnil");
}

TEST(Hex, DecodingDependsOnHowTheTextIsStored) {
  for (const NSString& text :
       {NSString("abc"), NSString("0g"), NSString(std::string_view("1\0", 2)), NSString("é"),
        NSString("0é"), NSString(wide("ab-")), NSString(NSMutableString(NSString("abc"))),
        NSString()})
    EXPECT_TRUE(zeb_dataWithHexString(text).isNil()) << shown(text);
  for (const auto& [text, expected] : {Texts("", ""), Texts("00fF", {"\0\xff", 2}),
                                       Texts(wide("abc"), "\x0a\xbc"), Texts(wide("a"), "\x0a")})
    EXPECT_EQ(shown(zeb_dataWithHexString(text)), expected) << shown(text);
}

TEST(Base32, HasTwoAlphabets) {
  const std::string decoding = "ABCDEFGHIJKLMNOPQRSTUVWXYZ234567=";
  const std::string encoding = "abcdefghijkmnpqrstuvwxyz23456789=";
  // The vectors of RFC 4648.
  for (const auto& [text, bytes] :
       {Texts("", ""), Texts("MY======", "f"), Texts("MZXQ====", "fo"), Texts("MZXW6===", "foo"),
        Texts("MZXW6YQ=", "foob"), Texts("MZXW6YTB", "fooba"), Texts("MZXW6YTBOI======", "foobar"),
        Texts(NSString(decoding), {"\x00\x44\x32\x14\xc7\x42\x54\xb6\x35\xcf"
                                   "\x84\x65\x3a\x56\xd7\xc6\x75\xbe\x77\xdf",
                                   20})}) {
    std::string encoded = text.utf8();
    if (text.length() == 33) encoded.pop_back();
    for (char& character : encoded) character = encoding[decoding.find(character)];
    EXPECT_EQ(shown(base32String(dataOf(bytes))), encoded);
    EXPECT_EQ(base32String(scattered(bytes)), NSString(encoded));
    EXPECT_EQ(shown(dataWithBase32String(text)), bytes);
  }
  for (const auto& [text, bytes] :
       {Texts("MZ=XW\r\n6Y-TBO81I", "foobar"), Texts("MZXW6YTB\xC2\xA0", ""), Texts("my", ""),
        Texts(wide("MZXW6YTB"), "fooba"), Texts(NSString(std::string_view("M\0Y", 3)), "f"),
        Texts("n2======", "\xD0"), Texts(nullptr, "nil")})
    EXPECT_EQ(shown(Base32Codec::dataWithBase32String(text)), bytes) << shown(text);
  EXPECT_EQ(shown(base32String(NSString("fooba"))), "n3zy82vb");
  EXPECT_EQ(shown(stringWithBase32String("YOUQ")), "é");
  EXPECT_TRUE(stringWithBase32String("74======").isNil() && base32String(NSData()).isNil() &&
              base32String(NSString(std::u16string_view(u"\xD800"))).isNil());
  EXPECT_EQ(send(objc_lookUpClass("Base32Codec"), "base32StringWithData:"_sel, dataOf("f")),
            Value("n2======"));
}

TEST(Text, IsReadAcrossRangesAndNilWhenMalformed) {
  const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80 longer";
  for (std::size_t place = 0; place <= text.size(); ++place) {
    const NSData parts[] = {dataOf(text.substr(0, place)), scattered(text.substr(place))};
    ASSERT_EQ(shown(zeb_UTF8String(NSData::dataByJoining(parts))), text);
  }
  for (const char* bytes : {"a\x80", "\xC3", "b\xC3(c", "\xED\xA0\x80", "\xF0\x9F", "\xC3\xA9\xA9"})
    for (const NSData& data : {dataOf(bytes), scattered(bytes)})
      EXPECT_TRUE(zeb_UTF8String(data).isNil()) << bytes;
  EXPECT_EQ(shown(zeb_UTF8String(NSData::data())) + shown(zeb_UTF8String(nullptr)), "nil");
  EXPECT_EQ(shown(zeb_prettyPrintedJSONString(scattered(R"({"b":[1,"\ud800"]})"))),
            "{\n  \"b\" : [\n    1,\n    \"\\ud800\"\n  ]\n}");
  for (const NSData& data : {NSData(), NSData::data(), dataOf("{"), dataOf("1")})
    EXPECT_EQ(shown(zeb_prettyPrintedJSONString(data)), "nil");
}

TEST(Compression, LevelsAreBoundedAndLoggedForDebugging) {
  LogRecorder log;
  OLGSetLevel(OLGLevelDebug);
  std::string text;
  for (int i = 0; i < 3000; ++i) text += std::to_string(i * 7919 % 1000) + " ";
  const auto compressed = [&](std::int32_t level) { return zeb_gzipCompress(dataOf(text), level); };
  for (const std::int32_t level : {-5, -1, 0, 1, 9, 42}) {
    const NSData member = compressed(level);
    EXPECT_EQ(log.take(), Lines{"7" + channelAndFile + compression + "|" + compression +
                                formattedText(": Compressed data from %tu to %tu",
                                              {text.size(), member.length()})});
    EXPECT_EQ(zeb_gzipDecompress(member).view(), text) << level;
  }
  EXPECT_TRUE(compressed(-5) == compressed(6) && compressed(42) == compressed(9));
  EXPECT_GT(compressed(0).length(), text.size());
}

TEST(Compression, FailsWhenTheMemberIsLargerThanItsBound) {
  LogRecorder log;
  for (const std::string& text : {std::string(), std::string("short"), noise(3000)}) {
    EXPECT_TRUE(zeb_gzipCompress(dataOf(text), 9).isNil()) << text.size();
    EXPECT_EQ(log.take(),
              Lines{"3" + channelAndFile + compression + "|" + compression +
                    ": zlib error while attempting compression: \"Unexpected: decode() result did "
                    "not finish with Z_STREAM_END\" Message: \"(null)\""});
  }
  // The wrapper of stored bytes grows more slowly than the bound.
  const std::string large = noise(300'000);
  for (const std::int32_t level : {0, 9})
    EXPECT_EQ(zeb_gzipDecompress(zeb_gzipCompress(dataOf(large), level)).view(), large);
  EXPECT_TRUE(zeb_gzipCompress(nullptr, 6).isNil() && zeb_gzipDecompress(nullptr).isNil());
  EXPECT_EQ(log.take(), Lines{});
}

TEST(Compression, TakesOnlyTheFirstRangeButInflatesAll) {
  const std::string text(70'000, 'a');
  EXPECT_EQ(zeb_gzipDecompress(zeb_gzipCompress(cut(text, 5000), 6)).length(), 5000u);
  const NSData large = dataOf(noise(50'000) + text);
  const NSData member = zeb_gzipCompress(large, 6);
  for (std::size_t place = 1; place < member.length(); place += 997)
    EXPECT_EQ(zeb_gzipDecompress(cut(member.view(), place)), large) << place;
  // The one range that ends where a chunk of 16 KiB is full and nothing is left to write.
  LogRecorder log;
  const NSData stored = zeb_gzipCompress(dataOf(noise(40'000)), 0);
  for (std::size_t place = 16'384; place < 16'384 + 32; ++place)
    if (zeb_gzipDecompress(cut(stored.view(), place)).isNil()) log.lines.push_back("nil");
  EXPECT_EQ(log.take(), (Lines{failedInflation, "nil"}));
}

TEST(Compression, RefusesWhatIsNoCompleteMemberOrTooLong) {
  LogRecorder log;
  const std::string member(zeb_gzipCompress(dataOf(std::string(40'000, 'x')), 6).view());
  std::vector<std::string> inputs{
      "\x1f", noise(100), "\x4b\x04", {"\x78\x9c\x4b\x04\x00\x00\x62\x00\x62", 9}};
  for (std::size_t length = 0; length < member.size(); ++length)
    inputs.push_back(member.substr(0, length));
  for (std::size_t place = member.size() - 8; place < member.size(); ++place)
    inputs.emplace_back(member)[place] ^= 1;
  for (const std::string& bytes : inputs) {
    EXPECT_TRUE(zeb_gzipDecompress(dataOf(bytes)).isNil());
    ASSERT_EQ(log.take(), Lines{failedInflation});
  }
  for (const std::string& tail : {std::string("garbage"), member})
    EXPECT_EQ(zeb_gzipDecompress(cut(member + tail, member.size())).length(), 40'000u);
  // What other programs write for empty content.
  const NSData nothing =
      zeb_gzipDecompress(dataOf({"\x1f\x8b\x08\0\0\0\0\0\0\x03\x03\0\0\0\0\0\0\0\0\0", 20}));
  EXPECT_TRUE(!nothing.isNil() && nothing.isEmpty());
  const NSData bomb = zeb_gzipCompress(dataOf(std::string(50'000'000, '\0')), 9);
  EXPECT_EQ(zeb_gzipDecompress(bomb, 50'000'000).length(), 50'000'000u);
  ASSERT_EQ(log.take(), Lines{});
  for (const std::size_t limit : {0u, 16'384u, 49'999'999u}) {
    EXPECT_TRUE(zeb_gzipDecompress(bomb, limit).isNil());
    EXPECT_EQ(log.take(), Lines{failedInflation + " The content is longer than the permitted " +
                                std::to_string(limit) + " bytes."});
  }
}

}  // namespace zeb::test
