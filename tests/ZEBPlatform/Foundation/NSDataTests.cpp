#include <ZEBPlatform/Foundation/NSData.h>

#include <array>

#include "Support/Storm.h"

namespace zeb::test {

NSData dataOf(std::string_view text) { return NSData::dataWithBytes(text); }

TEST(NSData, JoinsWithoutCopying) {
  const NSData one = dataOf("one");
  const NSData inner[] = {dataOf("two"), NSData(), NSData::data(), one};
  const NSData outer[] = {one, NSData::dataByJoining(inner), dataOf("!")};
  const NSData joined = NSData::dataByJoining(outer);
  std::string seen;
  joined.enumerateByteRanges([&](std::span<const std::byte> bytes, NSRange range) {
    EXPECT_EQ(range, (NSRange{seen.size(), bytes.size()}));
    EXPECT_TRUE(!seen.empty() || bytes.data() == one.bytes().data());
    seen.append(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    return seen.size() < 6;
  });
  EXPECT_EQ(seen, "onetwo") << "in order, until the visitor has had enough";
  EXPECT_TRUE(joined.length() == 10 && joined.view() == "onetwoone!");
  EXPECT_TRUE(joined == dataOf("onetwoone!") && joined.subdataWithRange({2, 3}) == dataOf("etw"));
  EXPECT_EQ(raisedName([&] { (void)joined.subdataWithRange({11, 0}); }), NSRangeException);
  EXPECT_EQ(raisedName([&] { (void)joined.subdataWithRange({1, SIZE_MAX}); }), NSRangeException);
}

TEST(NSData, JoinsOnceForManyThreads) {
  const NSData parts[] = {dataOf("some"), dataOf("thing")};
  for (int round = 0; round < 100; ++round) {
    const NSData joined = NSData::dataByJoining(parts);
    const char* seen[2];
    storm(2, [&](int thread, std::mt19937&) { seen[thread] = joined.view().data(); });
    EXPECT_TRUE(seen[0] == seen[1] && joined.view() == "something");
  }
}

TEST(NSData, ReleasesForeignBytesOnceAfterTheLastHandle) {
  const std::string bytes = "foreign";
  int releases = 0;
  std::vector<NSData> parts{
      NSData::dataWithBytesNoCopy(std::as_bytes(std::span(bytes)), [&releases] { ++releases; })};
  EXPECT_EQ(parts[0].view().data(), bytes.data());
  parts.push_back(parts[0].copy());
  NSData joined = NSData::dataByJoining(parts);
  parts.clear();
  EXPECT_TRUE(joined.view() == "foreignforeign" && releases == 0);
  joined = nullptr;
  EXPECT_EQ(releases, 1);
}

TEST(NSData, TakesAnyContiguousBytes) {
  const std::vector<unsigned char> bytes{'a', 'b'};
  for (const NSData& data :
       {NSData::dataWithBytes("ab"), NSData::dataWithBytes(std::string("ab")),
        NSData::dataWithBytes(bytes), NSData::dataWithBytes(std::as_bytes(std::span(bytes))),
        NSData::dataWithBytes(std::array{'a', 'b'})}) {
    EXPECT_TRUE(data.view() == "ab" && data.size() == 2 && !data.empty());
  }
  NSMutableData data;
  data.appendBytes(bytes);
  data.appendBytes("c");
  EXPECT_EQ(data.view(), "abc");
}

TEST(NSMutableData, ChangesInPlace) {
  NSMutableData data;
  const NSMutableData handle = data;
  data.appendData(dataOf("abc"));
  data.appendData(data);
  data.mutableBytes()[0] = std::byte{'X'};
  data.setLength(7);
  EXPECT_EQ(handle.view(), std::string_view("Xbcabc\0", 7));
  const NSData parts[] = {data, data};
  const NSData joined = NSData::dataByJoining(parts);
  data.setLength(1);
  EXPECT_EQ(joined.length(), 14u) << "joining takes snapshots of what may change";
  EXPECT_EQ(data, dataOf("X"));
}

TEST(NSData, Base64) {
  // clang-format off
  const std::pair<const char*, const char*> vectors[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="},
      {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"}, {"\xFB\xFF\xBF", "+/+/"}};
  // clang-format on
  for (const auto& [bytes, text] : vectors) {
    EXPECT_EQ(dataOf(bytes).base64EncodedString(), text);
    EXPECT_EQ(NSData::dataWithBase64EncodedString(text), dataOf(bytes)) << text;
  }
  for (const char* text :
       {"Z", "Zg", "Zg=", "Zh==", "Zm9=", "Zg===", "=", "==", "====", "=Zg=", "Zg=a",
        "Z===", "Zg==Zg==", "Zm9v\n", "Zm 9v", " Zm9v", "Zm9-", "Zm9_", "Zm\xC3\xA9v"}) {
    EXPECT_TRUE(NSData::dataWithBase64EncodedString(text).isNil()) << text;
  }
  EXPECT_TRUE(NSData::dataWithBase64EncodedString("Zm9\0"_ns).isNil());
}

}  // namespace zeb::test
