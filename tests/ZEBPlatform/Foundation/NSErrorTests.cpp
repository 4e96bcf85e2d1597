// First, as Foundation/fmt.h demands.
#include <fmt/ranges.h>

#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/fmt.h>

#include "Support/Support.h"

namespace zeb::test {

TEST(NSError, CarriesDomainCodeAndDetails) {
  const NSError inner("inner", -1);
  const NSString text("It failed.");
  const NSDictionary details{{NSLocalizedDescriptionKey, text}, {NSUnderlyingErrorKey, inner}};
  const NSError error("domain", 7, details);
  EXPECT_TRUE(error.localizedDescription() == text && error.underlyingError() == inner);
  EXPECT_STREQ(error.what(), "It failed.");
  EXPECT_STREQ(inner.what(), "The operation couldn't be completed. (inner error -1.)");
  EXPECT_TRUE(inner.userInfo() == NSDictionary::dictionary() && inner.underlyingError().isNil());

  const NSError twin("domain", 7, details.mutableCopy());
  const Value value = error;
  EXPECT_TRUE(error == twin && value.hash() == Value(twin).hash() && NSError::from(value) == error);
  EXPECT_FALSE(error == NSError("domain", 8, details) || error == NSError("domain", 7));
  EXPECT_FALSE(error == NSError("other", 7, details) || error == NSError());
  EXPECT_TRUE(NSError() == NSError(nullptr) && NSError::from("text").isNil());
  const std::string described = "Error Domain=domain Code=7 \"It failed.\"|(null)";
  EXPECT_EQ(NSString::stringWithFormat("%@|%@", error, NSError()), described);
  EXPECT_EQ(fmt::format("{}|{}", error, NSError()), described);
  EXPECT_EQ(fmt::format("{:>5}{}", "text"_ns, NSArray{1}), " text(\n    1\n)");
}

TEST(NSException, CarriesNameReasonAndDetails) {
  const NSException exception("Name", "the reason", {{"key", 1}});
  EXPECT_STREQ(exception.what(), "Name: the reason");
  EXPECT_EQ(fmt::format("{}", exception), exception.what());
  EXPECT_EQ(NSException::from(exception).userInfo()["key"], 1);
  EXPECT_FALSE(NSException::isException(NSError("domain", 1)) || NSException::isException("text"));
  EXPECT_EQ(raisedName([] { NSException::from("text"); }), NSInvalidArgumentException);
}

}  // namespace zeb::test
