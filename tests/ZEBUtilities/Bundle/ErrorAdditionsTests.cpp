#include <ZEBUtilities/Bundle/NSError+ZEBAdditions.h>
#include <gtest/gtest.h>

namespace zeb {
namespace {

TEST(ErrorAdditions, MakesTextForPeople) {
  const NSDictionary reason{{"NSLocalizedFailureReason", "no luck"}};
  const struct {
    NSError error;
    const char* text;
  } cases[] = {
      {zeb_errorWithDomain("d", 1, "It failed."), "It failed."},
      {zeb_errorWithDomain("d", 1, "It failed. (null)."), "It failed"},
      {zeb_errorWithDomain("d", 1, nullptr), ""},
      {NSError("abc", 7), "7 Abc"},
      {NSError("abc", -7, reason), "-7 No luck"},
      {NSError("", 0), "0 "},
      {nullptr, nullptr},
  };
  for (const auto& [error, text] : cases) EXPECT_EQ(zeb_errorString(error), NSString(text));
  EXPECT_EQ(zeb_errorWithDomain("d", 1, nullptr).userInfo(),
            (NSDictionary{{"NSLocalizedDescription", ""}}));
}

TEST(ErrorAdditions, KnowsConnectionErrors) {
  const struct {
    NSError error;
    bool isNotConnected;
    bool isTimedOut;
  } cases[] = {
      {NSError("NSURLErrorDomain", -1009), true, false},
      {NSError("kCFErrorDomainCFNetwork", 2), true, false},
      {NSError("NSURLErrorDomain", -1001), false, true},
      {NSError("NSPOSIXErrorDomain", 60), false, true},
      {NSError("NSPOSIXErrorDomain", 2), false, false},
      {NSError("NSURLErrorDomain", 60), false, false},
      {nullptr, false, false},
  };
  for (const auto& [error, isNotConnected, isTimedOut] : cases) {
    EXPECT_EQ(zeb_isNotConnectedToInternetError(error), isNotConnected) << error;
    EXPECT_EQ(zeb_isTimedOutError(error), isTimedOut) << error;
  }
}

TEST(ErrorAdditions, ListsUnderlyingErrors) {
  const NSError inner("c", -3);
  const NSError middle("b", 2, {{"NSUnderlyingError", inner}});
  const NSError outer("a", 1, {{"NSUnderlyingError", middle}});
  EXPECT_EQ(zeb_errorDomainAndCodeString(outer, 0), "a:1"_ns);
  EXPECT_EQ(zeb_errorDomainAndCodeString(outer, 2), "a:1"_ns);
  EXPECT_EQ(zeb_errorDomainAndCodeString(outer, 1), "a:1,b:2,c:-3"_ns);
  EXPECT_TRUE(zeb_errorDomainAndCodeString(nullptr, 1).isNil());
}

}  // namespace
}  // namespace zeb
