#include <ZEBUtilities/Bundle.h>
#include <gtest/gtest.h>

namespace zeb::test {

Ref<NSBundle> bundleWith(const NSDictionary& info) {
  return NSBundle::bundleWithPath("/app", info);
}

TEST(BundleAdditions, PacksVersions) {
  const std::pair<NSDictionary, std::uint32_t> cases[] = {
      {{{"CFBundleVersion", "300.1.2.3.4"}}, 0xFF010203},
      {{{"CFBundleVersion", "7.25.1b2"}}, 0x07190102},
      {{{"CFBundleVersion", "v3"}}, 0x00030000},
      {{{"CFBundleVersion", "1..2"}}, 0x01000200},
      {{{"CFBundleVersion", "99999999999999999999.255"}}, 0xFFFF0000},
      {{{"CFBundleVersion", ""}}, 0},
      {{{"CFBundleVersion", "☕5"}}, 0x00050000},
      {{{"CFBundleShortVersionString", "4"}}, 0x04000000},
      {nullptr, 0}};
  for (const auto& [info, packed] : cases)
    EXPECT_EQ(zeb_bundleVersion(bundleWith(info)), packed) << info;
  EXPECT_EQ(zeb_bundleVersion(nullptr), 0u);
}

TEST(BundleAdditions, ReadsTheHostsKeys) {
  const NSArray types{NSDictionary{{"CFBundleURLSchemes", NSArray::array()}}, "odd",
                      NSDictionary{{"CFBundleURLSchemes", NSArray{"first", "second"}}}};
  const NSDictionary sparseInfo{{"CFBundleVersion", 1},
                                {"CFBundleShortVersionString", "2"},
                                {"CFBundleName", "name"},
                                {"CFBundleURLTypes", types}};
  NSMutableDictionary fullInfo = sparseInfo.mutableCopy();
  fullInfo.addEntriesFromDictionary({{"CFBundleVersion", "1"},
                                     {"KXSharedApplicationGroupIdentifier", "group"},
                                     {"KXSharedKeychainOAuthIdentifier", "oauth"},
                                     {"KXPushEnvironment", "sandbox"},
                                     {"CFBundleDisplayName", "display"},
                                     {"YOVClientPrimaryScheme", "own"}});
  using Case = std::tuple<NSString (*)(const Ref<NSBundle>&), const char*, const char*>;
  const Case cases[] = {{zeb_bundleVersionString, "1", "2"},
                        {zeb_bundleShortVersionString, "2", "2"},
                        {zeb_sharedApplicationGroupIdentifier, "group", nullptr},
                        {zeb_sharedKeychainOAuthIdentifier, "oauth", nullptr},
                        {zeb_pushEnvironment, "sandbox", nullptr},
                        {zeb_clientDisplayName, "display", "name"},
                        {zeb_clientPrimaryScheme, "own", "first"}};
  for (const auto& [method, inFull, inSparse] : cases) {
    EXPECT_EQ(method(bundleWith(fullInfo)), NSString(inFull));
    EXPECT_EQ(method(bundleWith(sparseInfo)), NSString(inSparse)) << inFull;
    EXPECT_TRUE(method(bundleWith(nullptr)).isNil() && method(nullptr).isNil()) << inFull;
  }
}

TEST(BundleAdditionsDeathTest, FindsSomeValuesOncePerProcess) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // a process of its own for each
  const std::pair<NSDictionary, std::string> cases[] = {
      {{{"NSExtension", NSDictionary::dictionary()},
        {"CFBundleVersion", "3.1"},
        {"KXBetaMobileFeedbackURL", "url"}},
       "1 0 0 <url> 03010000\n"},
      {{{"NSExtension", "text"}, {"VUITTesting", "YES"}}, "0 1 1 <> 00000000\n"}};
  for (const auto& [info, line] : cases) {
    const auto writeTwiceAndExit = [&] {
      NSBundle::setMainBundle(bundleWith(info));
      for (const auto& bundle :
           {NSBundle::mainBundle(), bundleWith({{"KXBetaMobileFeedbackURL", "other"}})}) {
        std::fprintf(stderr, "%d %d %d <%s> %08X\n", ZEBAmIRunningInAnExtension(),
                     ZEBAmIBeingUITested(), ZEBAmIBeingTested(),
                     zeb_betaMobileFeedbackURL(bundle).utf8().c_str(), zeb_mainBundleVersion());
      }
      std::_Exit(0);
    };
    EXPECT_EXIT(writeTwiceAndExit(), testing::ExitedWithCode(0), line + line);
  }
}

TEST(ErrorAdditions, MakesTextForPeople) {
  const NSDictionary reason{{"NSLocalizedFailureReason", "no luck"}};
  const std::pair<NSError, const char*> cases[] = {
      {zeb_errorWithDomain("d", 1, "It failed."), "It failed."},
      {zeb_errorWithDomain("d", 1, "It failed. (null)."), "It failed"},
      {zeb_errorWithDomain("d", 1, nullptr), ""},
      {NSError("abc", 7), "7 Abc"},
      {NSError("abc", -7, reason), "-7 No luck"},
      {NSError("", 0), "0 "},
      {nullptr, nullptr}};
  for (const auto& [error, text] : cases) EXPECT_EQ(zeb_errorString(error), NSString(text));
}

TEST(ErrorAdditions, KnowsConnectionErrorsAndListsUnderlyingOnes) {
  const std::tuple<NSError, bool, bool> cases[] = {
      {NSError("NSURLErrorDomain", -1009), true, false},
      {NSError("kCFErrorDomainCFNetwork", 2), true, false},
      {NSError("NSURLErrorDomain", -1001), false, true},
      {NSError("NSPOSIXErrorDomain", 60), false, true},
      {NSError("NSPOSIXErrorDomain", 2), false, false},
      {NSError("NSURLErrorDomain", 60), false, false},
      {nullptr, false, false}};
  for (const auto& [error, isNotConnected, isTimedOut] : cases) {
    EXPECT_EQ(zeb_isNotConnectedToInternetError(error), isNotConnected) << error;
    EXPECT_EQ(zeb_isTimedOutError(error), isTimedOut) << error;
  }
  const NSError inner("c", -3);
  const NSError middle("b", 2, {{"NSUnderlyingError", inner}});
  const NSError outer("a", 1, {{"NSUnderlyingError", middle}});
  EXPECT_EQ(zeb_errorDomainAndCodeString(outer, 2), "a:1"_ns);
  EXPECT_EQ(zeb_errorDomainAndCodeString(outer, 1), "a:1,b:2,c:-3"_ns);
  EXPECT_TRUE(zeb_errorDomainAndCodeString(nullptr, 1).isNil());
}

}  // namespace zeb::test
