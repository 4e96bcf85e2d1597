#include <ZEBPlatform/Bundle/NSPropertyListSerialization.h>
#include <ZEBPlatform/Foundation.h>
#include <gtest/gtest.h>

namespace zeb::test {

using namespace std::string_literals;

/// A value, or nil and an error that says why.
Value read(const std::string& document, NSError* error = nullptr) {
  NSError own;
  const Value value = NSPropertyListSerialization::propertyListWithData(
      NSData::dataWithBytes(document), 0, nullptr, &own);
  const std::int64_t expected = value.isNil() ? std::int64_t{NSPropertyListReadCorruptError} : 0;
  EXPECT_EQ(own.code(), expected);
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
std::string binary(const std::vector<std::string>& objects) {
  std::string document = "bplist00";
  std::string offsets;
  for (const std::string& object : objects) {
    offsets += {static_cast<char>(document.size() >> 8), static_cast<char>(document.size())};
    document += object;
  }
  const std::size_t table = document.size();
  const std::string trailer = "\0\0\0\0\0\0\2\1\0\0\0\0\0\0\0"s +
                              static_cast<char>(objects.size()) + std::string(14, '\0') +
                              static_cast<char>(table >> 8) + static_cast<char>(table);
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
  const NSDictionary expected{{"text", "again"},
                              {"least", INT64_MIN},
                              {"most", UINT64_MAX},
                              {"hex", -31},
                              {"real", 0.5},
                              {"tiny", -0.0},
                              {"yes", true},
                              {"date", NSDate::dateWithTimeIntervalSinceReferenceDate(86400)},
                              {"late", NSDate::dateWithTimeIntervalSince1970(64092211200)},
                              {"data", NSData::dataWithBytes(std::string_view("hi"))},
                              {"list", NSArray{NSDictionary::dictionary(), NSArray::array()}}};
  EXPECT_EQ(info, expected);
  EXPECT_TRUE(info["yes"].isBoolean() && info["tiny"].isIdenticalTo(Value(-0.0)));
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
  const NSArray list{uid, NSDate::dateWithTimeIntervalSinceReferenceDate(2)};
  EXPECT_EQ(value, (NSDictionary{{"i", -2}, {"u", uid}, {"r", 0.5}, {"w", "☕"}, {"l", list}}));
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
  const std::pair<const char*, std::vector<std::string>> cases[] = {
      {"malformed",
       {"", "nonsense", xml("<true/>").substr(0, xml("<true/>").size() - 8),
        xml("<true/>") + "<true/>"}},
      {"malformed XML: mismatched tag in line 3", {xml("<array>")}},
      {"unknown entity", {xml("<string>a&bogus;</string>")}},
      {"no value", {xml("")}},
      {"more than one value", {xml("<true/><true/>")}},
      {"boolean", {xml("<true>1</true>")}},
      {"text between", {xml("<array>1</array>")}},
      {"key outside", {xml("<array><key>a</key></array>")}},
      {"key without a value",
       {xml("<dict><key>a</key></dict>"), xml("<dict><key>a</key><key>b</key></dict>")}},
      {"value without a key", {xml("<dict><true/></dict>")}},
      {"where a text", {xml("<string><true/></string>")}},
      {"unknown name", {xml("<plist><true/></plist>")}},
      {"invalid integer", {xml("<integer>1x</integer>"), xml("<integer/>")}},
      {"beyond 64 bits",
       {xml("<integer>-9223372036854775809</integer>"),
        binary({"\x14\0\0\0\0\0\0\0\1\0\0\0\0\0\0\0\0"s})}},
      {"invalid real number", {xml("<real>1,5</real>")}},
      {"out of range", {xml("<real>-1e400</real>")}},
      {"invalid date",
       {xml("<date>2001-02-29T00:00:00Z</date>"), xml("<date>2001-01-01T24:00:00Z</date>"),
        xml("<date>2001-01-01</date>"), binary({"\x33\x7F\xF0\0\0\0\0\0\0"s})}},
      {"no base64", {xml("<data>aGk</data>")}},
      {"512 levels",
       {xml(repeated("<array>", 513) + repeated("</array>", 513)),
        xml(repeated("<array>", 1'000'000))}},
      {"declarations", {"<!DOCTYPE plist [<!ENTITY a 'b'>]><plist><string>&a;</string></plist>"}},
      {"too many objects",
       {xml("<array>" + repeated("<true/>", 1'000'001) + "</array>"),
        binary({"\xA1\x01", "\xA1\x01"}), binary(bomb)}},
      {"16 MiB", {std::string((16u << 20) + 1, ' ')}},
      {"cut short", {"bplist00"}},
      {"damaged", {binary({"\xA1\x01"}), binary({"\x5F\x13\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"})}},
      {"unknown kind", {binary({"\x0F"})}},
      {"nested more than 512 levels deep, or in a cycle",
       {binary({"\xA1\x01", "\xA1\x01", textBomb[1]})}},
      {"key that is no string", {binary({"\xD1\x01\x01", "\x10\x01"})}},
      {"neither ASCII nor UTF-8", {binary({"\x51\xFF"})}},
      {"too much text", {binary(textBomb)}}};
  for (const auto& [reason, documents] : cases) {
    for (const std::string& document : documents) {
      NSError error;
      EXPECT_TRUE(read(document, &error).isNil()) << document.substr(0, 100);
      EXPECT_TRUE(error.localizedDescription().containsString(reason)) << error;
    }
  }
  EXPECT_FALSE(read(xml(repeated("<array>", 512) + repeated("</array>", 512))).isNil());
}

}  // namespace zeb::test
