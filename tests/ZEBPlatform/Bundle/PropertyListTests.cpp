#include <ZEBPlatform/Bundle/NSPropertyListSerialization.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zeb {
namespace {

using namespace std::string_literals;

/// A value, or nil and an error that says why.
Value read(const std::string& document, NSError* error = nullptr) {
  NSError own;
  const Value value = NSPropertyListSerialization::propertyListWithData(
      NSData::dataWithBytes(document), 0, nullptr, &own);
  EXPECT_NE(value.isNil(), own.isNil());
  if (!own.isNil()) {
    EXPECT_EQ(own.code(), NSPropertyListReadCorruptError);
  }
  if (error) *error = own;
  return value;
}

std::string xml(const std::string& content) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC \"-//x//\" "
         "\"http://x/\">\n<plist version=\"1.0\">" +
         content + "</plist>";
}

std::string repeated(const std::string& text, int times) {
  std::string result;
  for (int i = 0; i < times; ++i) result += text;
  return result;
}

/// A binary document of at most 255 objects as they are written, with references of one byte.
std::string binary(const std::vector<std::string>& objects, int root = 0) {
  std::string document = "bplist00";
  std::string offsets;
  for (const std::string& object : objects) {
    offsets += {static_cast<char>(document.size() >> 8), static_cast<char>(document.size())};
    document += object;
  }
  const std::size_t table = document.size();
  std::string trailer(32, '\0');
  trailer[6] = 2;
  trailer[7] = 1;
  trailer[15] = static_cast<char>(objects.size());
  trailer[23] = static_cast<char>(root);
  trailer[30] = static_cast<char>(table >> 8);
  trailer[31] = static_cast<char>(table);
  return document + offsets + trailer;
}

TEST(PropertyList, ReadsEveryKindInBothForms) {
  const NSDictionary info(read(xml(R"(
      <dict>
        <key>text</key><string>a &amp; <![CDATA[<b>]]> ☕</string>
        <key>least</key><integer>-9223372036854775808</integer>
        <key>most</key><integer>18446744073709551615</integer>
        <key>hex</key><integer> -0x1f </integer>
        <key>real</key><real>+0.5</real>
        <key>tiny</key><real>-1e-400</real>
        <key>yes</key><true/>
        <key>date</key><date>2001-01-02T00:00:00Z</date>
        <key>late</key><date>4001-01-01T00:00:00Z</date>
        <key>data</key><data> aG
            k= </data>
        <!-- </dict> -->
        <key>list</key><array><dict/><array /></array>
        <key>text</key><string>again</string>
      </dict>)")));
  EXPECT_EQ(info["text"], Value("again"));
  EXPECT_EQ(info["least"], Value(INT64_MIN));
  EXPECT_EQ(info["most"], Value(UINT64_MAX));
  EXPECT_EQ(info["hex"], Value(-31));
  EXPECT_EQ(info["real"], Value(0.5));
  EXPECT_TRUE(info["tiny"].isIdenticalTo(Value(-0.0)));
  EXPECT_TRUE(info["yes"].isBoolean() && info["yes"].boolValue());
  EXPECT_EQ(NSDate(info["date"]).timeIntervalSinceReferenceDate(), 86400);
  EXPECT_EQ(NSDate(info["late"]).timeIntervalSince1970(), 64092211200);
  EXPECT_EQ(NSData(info["data"]).view(), "hi");
  EXPECT_EQ(info["list"], (NSArray{NSDictionary::dictionary(), NSArray::array()}));
  EXPECT_EQ(read("<?xml version='1.0' encoding='ISO-8859-1'?><string>\xE9</string>"), Value("é"));
  const std::string entities = repeated("&lt;", 500'000);
  EXPECT_EQ(NSString(read(xml("<string>" + entities + "</string>"))).length(), 500'000u);

  NSPropertyListFormat format{};
  const std::string document = binary(
      {"\xD5\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A", "\x51i", "\x51u", "\x51r", "\x51w", "\x51l",
       "\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFE", "\x80\x07", "\x23\x3F\xE0\0\0\0\0\0\0"s,
       "\x61\x26\x15", "\xA2\x07\x0B", "\x33\x40\0\0\0\0\0\0\0"s});
  const Value value = NSPropertyListSerialization::propertyListWithData(
      NSData::dataWithBytes(document), NSPropertyListMutableContainers, &format);
  EXPECT_EQ(format, NSPropertyListBinaryFormat_v1_0);
  EXPECT_TRUE(value.isMutable());
  const NSDictionary uid{{"CF$UID", 7}};
  EXPECT_EQ(value,
            (NSDictionary{{"i", -2},
                          {"u", uid},
                          {"r", 0.5},
                          {"w", "☕"},
                          {"l", NSArray{uid, NSDate::dateWithTimeIntervalSinceReferenceDate(2)}}}));

  for (std::size_t length = 0; length < document.size(); ++length) read(document.substr(0, length));
  for (std::size_t place = 0; place < document.size(); ++place) {
    for (const char change : {'\x00', '\x01', '\x0F', '\x7F', '\xFF', '\xA1', '\xD1'}) {
      std::string changed = document;
      changed[place] = change;
      read(changed);
    }
  }
}

TEST(PropertyList, ErrorsContainTheReason) {
  // Every level refers to the next one 100 times.
  std::vector<std::string> bomb;
  for (char level = 1; level < 20; ++level) {
    bomb.push_back("\xAF\x10\x64" + std::string(100, level));
  }
  bomb.emplace_back("\x09");
  // One text of 4000 bytes, 100 times.
  const std::vector<std::string> textBomb = {"\xAF\x10\x64" + std::string(100, 1),
                                             "\x5F\x11\x0F\xA0" + std::string(4000, 'x')};
  const struct {
    std::string document;
    const char* reason;
  } cases[] = {
      {"", "malformed"},
      {"nonsense", "malformed"},
      {xml("<array>"), "malformed XML: mismatched tag in line 3"},
      {xml("<true/>").substr(0, xml("<true/>").size() - 8), "malformed"},
      {xml("<true/>") + "<true/>", "malformed"},
      {xml("<string>a&bogus;</string>"), "unknown entity"},
      {xml(""), "no value"},
      {xml("<true/><true/>"), "more than one value"},
      {xml("<true>1</true>"), "boolean"},
      {xml("<array>1</array>"), "text between"},
      {xml("<array><key>a</key></array>"), "key outside"},
      {xml("<dict><key>a</key></dict>"), "key without a value"},
      {xml("<dict><key>a</key><key>b</key></dict>"), "key without a value"},
      {xml("<dict><true/></dict>"), "value without a key"},
      {xml("<string><true/></string>"), "where a text"},
      {xml("<plist><true/></plist>"), "unknown name"},
      {xml("<integer>1x</integer>"), "invalid integer"},
      {xml("<integer/>"), "invalid integer"},
      {xml("<integer>-9223372036854775809</integer>"), "beyond 64 bits"},
      {xml("<real>1,5</real>"), "invalid real number"},
      {xml("<real>-1e400</real>"), "out of range"},
      {xml("<date>2001-02-29T00:00:00Z</date>"), "invalid date"},
      {xml("<date>2001-01-01T24:00:00Z</date>"), "invalid date"},
      {xml("<date>2001-01-01</date>"), "invalid date"},
      {xml("<data>aGk</data>"), "no base64"},
      {xml(repeated("<array>", 513) + repeated("</array>", 513)), "512 levels"},
      {xml(repeated("<array>", 1'000'000)), "512 levels"},
      {"<!DOCTYPE plist [<!ENTITY a 'b'>]><plist><string>&a;</string></plist>", "declarations"},
      {xml("<array>" + repeated("<true/>", 1'000'001) + "</array>"), "too many objects"},
      {std::string((16u << 20) + 1, ' '), "16 MiB"},
      {"bplist00", "cut short"},
      {binary({"\xA1\x01"}), "damaged"},
      {binary({"\x0F"}), "unknown kind"},
      {binary({"\xA1\x01", "\xA1\x01"}), "too many objects"},
      {binary({"\xA1\x01", "\xA1\x01", "\x5F\x11\x0F\xA0" + std::string(4000, 'x')}),
       "nested more than 512 levels deep, or in a cycle"},
      {binary({"\xD1\x01\x01", "\x10\x01"}), "key that is no string"},
      {binary({"\x51\xFF"}), "neither ASCII nor UTF-8"},
      {binary({"\x33\x7F\xF0\0\0\0\0\0\0"s}), "invalid date"},
      {binary({"\x14\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\0"s}), "beyond 64 bits"},
      {binary({"\x5F\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"}), "damaged"},
      {binary(bomb), "too many objects"},
      {binary(textBomb), "too much text"},
  };
  for (const auto& [document, reason] : cases) {
    SCOPED_TRACE(document.substr(0, 100));
    NSError error;
    EXPECT_TRUE(read(document, &error).isNil());
    EXPECT_TRUE(error.localizedDescription().containsString(reason)) << error;
  }
  EXPECT_FALSE(read(xml(repeated("<array>", 512) + repeated("</array>", 512))).isNil());
}

}  // namespace
}  // namespace zeb
