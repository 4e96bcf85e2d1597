#include <ZEBUtilities/Bundle/NSBundle+ZEBAdditions.h>
#include <ZEBUtilities/Bundle/ZEBProcessEnvironment.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

namespace zeb {
namespace {

Ref<NSBundle> bundleWith(const NSDictionary& info) {
  return NSBundle::bundleWithPath("/app", info);
}

TEST(BundleAdditions, PacksVersions) {
  const struct {
    const char* version;
    std::uint32_t packed;
  } cases[] = {
      {"1.2", 0x01020000},
      {"300.1.2.3.4", 0xFF010203},
      {"7.25.1b2", 0x07190102},
      {"v3", 0x00030000},
      {"1..2", 0x01000200},
      {"99999999999999999999.255", 0xFFFF0000},
      {"", 0},
      {"☕5", 0x00050000},
  };
  for (const auto& [version, packed] : cases) {
    EXPECT_EQ(zeb_bundleVersion(bundleWith({{"CFBundleVersion", version}})), packed) << version;
  }
  EXPECT_EQ(zeb_bundleVersion(bundleWith({{"CFBundleShortVersionString", "4"}})), 0x04000000u);
  EXPECT_EQ(zeb_bundleVersion(bundleWith(nullptr)), 0u);
  EXPECT_EQ(zeb_bundleVersion(nullptr), 0u);
}

TEST(BundleAdditions, ReadsTheHostsKeys) {
  const NSArray types{NSDictionary{{"CFBundleURLSchemes", NSArray::array()}}, "odd",
                      NSDictionary{{"CFBundleURLSchemes", NSArray{"first", "second"}}}};
  const auto full = bundleWith({{"CFBundleVersion", "1"},
                                {"CFBundleShortVersionString", "2"},
                                {"KXSharedApplicationGroupIdentifier", "group"},
                                {"KXSharedKeychainOAuthIdentifier", "oauth"},
                                {"KXPushEnvironment", "sandbox"},
                                {"CFBundleName", "name"},
                                {"CFBundleDisplayName", "display"},
                                {"YOVClientPrimaryScheme", "own"},
                                {"CFBundleURLTypes", types}});
  const auto sparse = bundleWith({{"CFBundleVersion", 1},
                                  {"CFBundleShortVersionString", "2"},
                                  {"CFBundleName", "name"},
                                  {"CFBundleURLTypes", types}});
  const struct {
    NSString (*method)(const Ref<NSBundle>&);
    const char* inFull;
    const char* inSparse;
  } cases[] = {
      {zeb_bundleVersionString, "1", "2"},
      {zeb_bundleShortVersionString, "2", "2"},
      {zeb_sharedApplicationGroupIdentifier, "group", nullptr},
      {zeb_sharedKeychainOAuthIdentifier, "oauth", nullptr},
      {zeb_pushEnvironment, "sandbox", nullptr},
      {zeb_clientDisplayName, "display", "name"},
      {zeb_clientPrimaryScheme, "own", "first"},
  };
  for (const auto& [method, inFull, inSparse] : cases) {
    EXPECT_EQ(method(full), NSString(inFull));
    EXPECT_EQ(method(sparse), NSString(inSparse)) << inFull;
    EXPECT_TRUE(method(bundleWith(nullptr)).isNil() && method(nullptr).isNil()) << inFull;
  }
}

/// Ends the process after writing the values that are determined once per process.
[[noreturn]] void writeValuesAndExit(const NSDictionary& info) {
  NSBundle::setMainBundle(bundleWith(info));
  const auto write = [] {
    const NSString url = zeb_betaMobileFeedbackURL(NSBundle::mainBundle());
    std::fprintf(stderr, "%d %d %d <%s> %08X\n", ZEBAmIRunningInAnExtension(),
                 ZEBAmIBeingUITested(), ZEBAmIBeingTested(), url.utf8().c_str(),
                 zeb_mainBundleVersion());
  };
  write();
  zeb_betaMobileFeedbackURL(bundleWith({{"KXBetaMobileFeedbackURL", "other"}}));
  write();
  std::_Exit(0);
}

TEST(BundleAdditionsDeathTest, FindsSomeValuesOncePerProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // a process of its own for each
  const auto expectTwice = [](const NSDictionary& info, const std::string& line) {
    EXPECT_EXIT(writeValuesAndExit(info), testing::ExitedWithCode(0), line + "\n" + line + "\n");
  };
  expectTwice({{"NSExtension", NSDictionary::dictionary()},
               {"KXBetaMobileFeedbackURL", "url"},
               {"CFBundleVersion", "3.1"}},
              "1 0 0 <url> 03010000");
  expectTwice({{"NSExtension", "text"}, {"VUITTesting", "YES"}}, "0 1 1 <> 00000000");
}

}  // namespace
}  // namespace zeb
