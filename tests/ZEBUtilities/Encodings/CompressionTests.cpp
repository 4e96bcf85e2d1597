#include <Support/LogRecorder.h>
#include <Support/Support.h>
#include <ZEBUtilities/Encodings/NSData+ZlibAdditions.h>
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace zeb::test {

namespace {

const char* const failedInflation =
    "3|ZEBUtilitiesPerformance|ZEBUtilities/ZEBUtilities/NSData+ZlibAdditions|"
    "-[NSData(ZlibAdditions) zeb_gzipDecompress]|ZLib Decompress Error!";

NSData dataOf(std::string_view bytes) { return NSData::dataWithBytes(bytes); }

std::string noise(std::size_t length) {
  std::mt19937 random(1);
  std::string bytes(length, ' ');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

/// Both sides of a cut in two ranges.
NSData cut(std::string_view bytes, std::size_t place) {
  const NSData parts[] = {dataOf(bytes.substr(0, place)), dataOf(bytes.substr(place))};
  return NSData::dataByJoining(parts);
}

}  // namespace

TEST(Compression, LevelsAreBoundedAndLoggedForDebugging) {
  LogRecorder log;
  OLGSetLevel(OLGLevelDebug);
  std::string text;
  for (int i = 0; i < 3000; ++i) text += std::to_string(i * 7919 % 1000) + " ";
  const auto compressed = [&](std::int32_t level) { return zeb_gzipCompress(dataOf(text), level); };
  for (const std::int32_t level : {-5, -1, 0, 1, 9, 42}) {
    const NSData member = compressed(level);
    const std::string line = formattedText(
        "7|ZEBUtilitiesPerformance|ZEBUtilities/ZEBUtilities/NSData+ZlibAdditions|%s|%s: "
        "Compressed data from %tu to %tu",
        {"-[NSData(ZlibAdditions) zeb_gzipCompress:]", "-[NSData(ZlibAdditions) zeb_gzipCompress:]",
         text.size(), member.length()});
    EXPECT_EQ(log.take(), std::vector{line}) << level;
    EXPECT_EQ(zeb_gzipDecompress(member).view(), text) << level;
  }
  EXPECT_EQ(compressed(-5), compressed(6));
  EXPECT_EQ(compressed(42), compressed(9));
  EXPECT_GT(compressed(0).length(), text.size());
  EXPECT_NE(compressed(9), compressed(1));
}

TEST(Compression, FailsWhenTheMemberIsLargerThanItsBound) {
  LogRecorder log;
  for (const std::string& text : {std::string(), std::string("short"), noise(3000)}) {
    EXPECT_TRUE(zeb_gzipCompress(dataOf(text), 9).isNil()) << text.size();
    EXPECT_EQ(log.take(),
              std::vector<std::string>{
                  "3|ZEBUtilitiesPerformance|ZEBUtilities/ZEBUtilities/NSData+ZlibAdditions|"
                  "-[NSData(ZlibAdditions) zeb_gzipCompress:]|-[NSData(ZlibAdditions) "
                  "zeb_gzipCompress:]: zlib error while attempting compression: \"Unexpected: "
                  "decode() result did not finish with Z_STREAM_END\" Message: \"(null)\""});
  }
  // From about 5,500 bytes on, 1.002 times the length has room for the wrapper of stored bytes.
  const std::string large = noise(300'000);
  EXPECT_EQ(zeb_gzipDecompress(zeb_gzipCompress(dataOf(large), 9)).view(), large);
  EXPECT_EQ(zeb_gzipDecompress(zeb_gzipCompress(dataOf(large), 0)).view(), large);
  EXPECT_TRUE(zeb_gzipCompress(nullptr, 6).isNil() && zeb_gzipDecompress(nullptr).isNil());
  EXPECT_TRUE(log.take().empty());
}

TEST(Compression, TakesOnlyTheFirstRangeButInflatesAll) {
  const std::string text(70'000, 'a');
  EXPECT_EQ(zeb_gzipDecompress(zeb_gzipCompress(cut(text, 5000), 6)).length(), 5000u);
  const NSData large = dataOf(noise(50'000) + text);
  const NSData member = zeb_gzipCompress(large, 6);
  for (std::size_t place = 1; place < member.length(); place += 997)
    EXPECT_EQ(zeb_gzipDecompress(cut(member.view(), place)), large) << place;
  // A range may end where a chunk of 16 KiB is full and nothing is left to write.
  const NSData stored = zeb_gzipCompress(dataOf(noise(40'000)), 0);
  std::size_t failures = 0;
  LogRecorder log;
  for (std::size_t place = 16'384; place < 16'384 + 32; ++place)
    failures += zeb_gzipDecompress(cut(stored.view(), place)).isNil();
  EXPECT_EQ(failures, 1u);
}

TEST(Compression, RefusesWhatIsNoCompleteMember) {
  LogRecorder log;
  const std::string member(zeb_gzipCompress(dataOf(std::string(40'000, 'x')), 6).view());
  const auto damaged = [&](std::size_t fromEnd) {
    std::string copy = member;
    copy[copy.size() - fromEnd] ^= 1;
    return copy;
  };
  const std::string zlibStream("\x78\x9c\x4b\x04\x00\x00\x62\x00\x62", 9);
  const std::string rawStream("\x4b\x04\x00", 3);
  for (const std::string& bytes : {std::string(), std::string("\x1f"), zlibStream, rawStream,
                                   damaged(1), damaged(8), noise(100)}) {
    EXPECT_TRUE(zeb_gzipDecompress(dataOf(bytes)).isNil());
    EXPECT_EQ(log.take(), std::vector<std::string>{failedInflation});
  }
  for (std::size_t length = 0; length < member.size(); ++length)
    ASSERT_TRUE(zeb_gzipDecompress(dataOf(member.substr(0, length))).isNil()) << length;
  log.take();
  for (const std::string& tail : {std::string("garbage"), member}) {
    EXPECT_EQ(zeb_gzipDecompress(dataOf(member + tail)).length(), 40'000u);
    EXPECT_EQ(zeb_gzipDecompress(cut(member + tail, member.size())).length(), 40'000u);
  }
  // What other programs write for empty content.
  const char emptyMember[] = "\x1f\x8b\x08\0\0\0\0\0\0\x03\x03\0\0\0\0\0\0\0\0";
  const NSData nothing = zeb_gzipDecompress(dataOf({emptyMember, 20}));
  EXPECT_TRUE(!nothing.isNil() && nothing.isEmpty());
  EXPECT_TRUE(log.take().empty());
}

TEST(Compression, BoundsTheContent) {
  LogRecorder log;
  const NSData bomb = zeb_gzipCompress(dataOf(std::string(50'000'000, '\0')), 9);
  EXPECT_LT(bomb.length(), 60'000u);
  EXPECT_EQ(zeb_gzipDecompress(bomb, 50'000'000).length(), 50'000'000u);
  EXPECT_TRUE(log.take().empty());
  for (const std::size_t limit : {0u, 1u, 16'384u, 49'999'999u}) {
    EXPECT_TRUE(zeb_gzipDecompress(bomb, limit).isNil());
    EXPECT_EQ(log.take(),
              std::vector{
                  failedInflation +
                  formattedText(" The content is longer than the permitted %tu bytes.", {limit})});
  }
}

}  // namespace zeb::test
