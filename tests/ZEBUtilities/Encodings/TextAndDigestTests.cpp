#include <Support/Support.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBPlatform/Security/MessageDigest.h>
#include <ZEBUtilities/Encodings.h>
#include <ZEBUtilities/Encodings/HexDigitsPrivate.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace zeb::test {

namespace {

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

std::string someBytes(std::size_t length) {
  std::mt19937 random(1);
  std::string bytes(length, ' ');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

const std::string encoding = "abcdefghijkmnpqrstuvwxyz23456789";
const std::string decoding = "ABCDEFGHIJKLMNOPQRSTUVWXYZ234567";

/// The text with each character of one alphabet replaced by that of the other.
std::string translated(std::string text, const std::string& from, const std::string& to) {
  for (char& character : text)
    if (const auto place = from.find(character); place != from.npos) character = to[place];
  return text;
}

/// The UTF-8 form of text, "nil" for nil.
std::string shown(const NSString& text) { return text.isNil() ? "nil" : text.utf8(); }
std::string shown(const NSData& data) { return data.isNil() ? "nil" : std::string(data.view()); }

}  // namespace

TEST(Digests, AreThePublishedOnes) {
  struct Vector {
    NSData (*digest)(const NSData&);
    const char *ofNothing, *ofAbc;
  };
  const std::string million(1'000'000, 'a');
  const Vector vectors[] = {
      {zeb_MD2Hash, "8350e5a3e24c153df2275c9f80692773", "da853b0d3f88d99b30283a69e6ded6bb"},
      {zeb_MD4Hash, "31d6cfe0d16ae931b73c59d7e0c089c0", "a448017aaf21d8525fc10ae87aa6729d"},
      {zeb_MD5Hash, "d41d8cd98f00b204e9800998ecf8427e", "900150983cd24fb0d6963f7d28e17f72"},
      {zeb_SHA1Hash, "da39a3ee5e6b4b0d3255bfef95601890afd80709",
       "a9993e364706816aba3e25717850c26c9cd0d89d"},
      {zeb_SHA256Hash, "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855",
       "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {zeb_SHA512Hash,
       "cf83e1357eefb8bdf1542850d66d8007d620e4050b5715dc83f4a921d36ce9ce"
       "47d0d13c5d85f2b0ff8318d2877eec2f63b931bd47417a81a538327af927da3e",
       "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a"
       "2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f"},
  };
  for (const auto& [digest, ofNothing, ofAbc] : vectors) {
    EXPECT_EQ(zeb_hexStringValue(digest(NSData::data())), ofNothing);
    EXPECT_EQ(zeb_hexStringValue(digest(dataOf("abc"))), ofAbc);
    EXPECT_EQ(digest(scattered(million)), digest(dataOf(million)));
    EXPECT_TRUE(digest(nullptr).isNil());
  }
  EXPECT_EQ(zeb_hexStringValue(zeb_MD5Hash(dataOf(million))), "7707d6ae4e027c70eea2a935c2296f21");
  EXPECT_EQ(zeb_hexStringValue(zeb_SHA1Hash(dataOf(million))),
            "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
  EXPECT_EQ(zeb_hexStringValue(zeb_SHA256Hash(dataOf(million))),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Digests, DoNotDependOnTheLibraryThatComputesThem) {
  const std::string message = someBytes(3000);
  const auto bytes = std::as_bytes(std::span(message));
  for (const auto algorithm : {DigestAlgorithm::md5, DigestAlgorithm::sha1, DigestAlgorithm::sha256,
                               DigestAlgorithm::sha512}) {
    std::vector<std::byte> one(digestLength(algorithm)), other = one;
    for (std::size_t length = 0; length <= bytes.size(); length += 37) {
      MessageDigest forShort(algorithm, 0), forLong(algorithm, 1 << 20);
      forShort.update(bytes.first(length));
      forShort.finish(one);
      forLong.update(bytes.first(length));
      forLong.finish(other);
      ASSERT_EQ(one, other) << length;
    }
  }
  EXPECT_DEATH(MessageDigest(DigestAlgorithm::md5, 0).finish({}), "the digest's length");
}

TEST(Hex, BlocksAndSingleBytesAgree) {
  const std::string bytes = someBytes(300);
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    const auto span = std::as_bytes(std::span(bytes)).first(length);
    std::string digits(2 * length, ' '), byByte = digits;
    detail::encodeHex(span, digits.data());
    detail::encodeHexByByte(span, byByte.data());
    ASSERT_EQ(digits, byByte);
    ASSERT_EQ(zeb_hexStringValue(scattered(bytes.substr(0, length))), NSString(digits));
    std::vector<std::byte> decoded(length);
    ASSERT_TRUE(detail::decodeHex(digits.data(), decoded));
    ASSERT_TRUE(std::equal(decoded.begin(), decoded.end(), span.begin()));
  }
  // Every character at every place of a block and of the rest after it.
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
}

TEST(Hex, DecodingDependsOnHowTheTextIsStored) {
  const std::pair<NSString, std::string> cases[] = {
      {"", ""},
      {"00FF", std::string("\0\xff", 2)},
      {"0aF9", "\x0a\xf9"},
      {"abc", "nil"},
      {"0g", "nil"},
      {NSString(std::string_view("1\0", 2)), "nil"},
      {"é", "nil"},
      {"0é", "nil"},
      {wide("abc"), "\x0a\xbc"},
      {wide("0aF9"), "\x0a\xf9"},
      {wide("ab-"), "nil"},
      {wide("a"), "\x0a"},
      {wide(""), ""},
      {NSMutableString(NSString("abc")), "nil"},
      {nullptr, "nil"},
  };
  for (const auto& [text, expected] : cases)
    EXPECT_EQ(shown(zeb_dataWithHexString(text)), expected) << shown(text);
  EXPECT_EQ(shown(zeb_hexStringValue(NSData::data())), "");
  EXPECT_TRUE(zeb_hexStringValue(nullptr).isNil());
}

TEST(Base32, HasTwoAlphabets) {
  // The vectors of RFC 4648, in its alphabet.
  const std::pair<std::string, std::string> vectors[] = {
      {"", ""},
      {"f", "MY======"},
      {"fo", "MZXQ===="},
      {"foo", "MZXW6==="},
      {"foob", "MZXW6YQ="},
      {"fooba", "MZXW6YTB"},
      {"foobar", "MZXW6YTBOI======"},
  };
  for (const auto& [bytes, text] : vectors) {
    EXPECT_EQ(translated(shown(base32String(dataOf(bytes))), encoding, decoding), text);
    EXPECT_EQ(shown(dataWithBase32String(NSString(text))), bytes);
  }
  EXPECT_EQ(shown(base32String(dataOf(std::string_view("\x00\x44\x32\x14\xc7\x42\x54\xb6\x35\xcf"
                                                       "\x84\x65\x3a\x56\xd7\xc6\x75\xbe\x77\xdf",
                                                       20)))),
            encoding);
  const std::pair<NSString, std::string> decoded[] = {
      {"", ""},
      {"MZ=XW\r\n6Y-TBO81I", "foobar"},
      {"MZXW6YTBMZX\xC2\xA0", ""},
      {wide("MZXW6YTB"), "fooba"},
      {NSString(std::string_view("M\0Y", 3)), "f"},
      {"n2======", std::string("\xD0", 1)},
      {"mzxw6yt", "\xF0"},
      {"my", ""},
      {nullptr, "nil"},
  };
  for (const auto& [text, expected] : decoded)
    EXPECT_EQ(shown(Base32Codec::dataWithBase32String(text)), expected) << shown(text);
  // The lengths of incomplete groups, which also incomplete bytes have.
  const std::size_t lengths[] = {0, 1, 1, 1, 2, 3, 3, 4, 5};
  for (std::size_t count = 0; count < std::size(lengths); ++count)
    EXPECT_EQ(dataWithBase32String(NSString(std::string(count, 'B'))).length(), lengths[count]);
  EXPECT_TRUE(base32String(NSData()).isNil() && base32String(NSString()).isNil());
}

TEST(Base32, ReadsScatteredDataAndText) {
  const std::string bytes = someBytes(400);
  for (std::size_t length = 0; length <= bytes.size(); ++length) {
    const std::string_view part = std::string_view(bytes).substr(0, length);
    const NSString text = base32String(dataOf(part));
    ASSERT_EQ(base32String(scattered(part)), text) << length;
    std::string readable = translated(shown(text), encoding, decoding);
    if (length % 7 == 3 && length > 20) readable.insert(length % 20, "\n");
    ASSERT_EQ(shown(dataWithBase32String(NSString(readable))), part) << length;
  }
  EXPECT_EQ(shown(base32String(NSString("fooba"))), "n3zy82vb");
  EXPECT_EQ(shown(stringWithBase32String("YOUQ")), "é");
  EXPECT_TRUE(stringWithBase32String("74======").isNil());
  EXPECT_TRUE(base32String(NSString(std::u16string_view(u"\xD800"))).isNil());
  const Value sent =
      send(objc_lookUpClass("Base32Codec"), "base32StringWithData:"_sel, dataOf("f"));
  EXPECT_EQ(sent, Value("n2======"));
}

TEST(UTF8Data, IsReadAcrossRanges) {
  const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80 end of a longer text \xC3\xA9";
  EXPECT_EQ(shown(zeb_UTF8String(dataOf(text))), text);
  for (std::size_t first = 1; first < text.size(); ++first) {
    for (std::size_t second = first; second <= text.size(); ++second) {
      const NSData parts[] = {dataOf(text.substr(0, first)),
                              dataOf(text.substr(first, second - first)),
                              dataOf(text.substr(second))};
      ASSERT_EQ(shown(zeb_UTF8String(NSData::dataByJoining(parts))), text);
    }
  }
  const char* const malformed[] = {
      "a\x80",        "\xC3",         "ab\xC3(c",     "\xE2\x82",
      "\xED\xA0\x80", "\xF0\x9F\x98", "\xC3\xA9\xA9", "\xFF long enough"};
  for (const char* bytes : malformed) {
    EXPECT_TRUE(zeb_UTF8String(dataOf(bytes)).isNil()) << bytes;
    EXPECT_TRUE(zeb_UTF8String(scattered(bytes)).isNil()) << bytes;
  }
  EXPECT_EQ(shown(zeb_UTF8String(NSData::data())), "");
  EXPECT_TRUE(zeb_UTF8String(nullptr).isNil());
}

TEST(PrettyJSON, IsNilWhenItDoesNotParse) {
  const std::string document = R"({"b":[1,{"a":"\ud800"}]})";
  const char* const pretty =
      "{\n  \"b\" : [\n    1,\n    {\n      \"a\" : \"\\ud800\"\n    }\n  ]\n}";
  EXPECT_EQ(shown(zeb_prettyPrintedJSONString(dataOf(document))), pretty);
  EXPECT_EQ(shown(zeb_prettyPrintedJSONData(scattered(document))), pretty);
  for (const NSData& data : {NSData(), NSData::data(), dataOf("{"), dataOf("1")}) {
    EXPECT_TRUE(zeb_prettyPrintedJSONData(data).isNil());
    EXPECT_TRUE(zeb_prettyPrintedJSONString(data).isNil());
  }
}

}  // namespace zeb::test
