#include <Foundation/NSException.h>
#include <Foundation/NSSet.h>
#include <Foundation/NSURL.h>
#include <ZEBUtilities/NSData+ZEBAdditions.h>
#include <ZEBUtilities/NSData+ZEBJSONAdditions.h>
#include <ZEBUtilities/ZEBJSONSerialization.h>
#include <ZEBUtilities/ZEBUtilitiesConstants.h>
#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>
#include <thread>

#include "../../Platform/Logging/LogRecorder.h"
#include "FakeSystem.h"

namespace zeb {
namespace {

using Json = ZEBJSONSerialization;
using Lines = std::vector<std::string>;

const std::string place = "|ZEBUtilitiesJSON|ZEBUtilities/ZEBUtilities/ZEBJSONSerialization|";
const std::string writing = place + "+[ZEBJSONSerialization dataWithJSONObject:options:error:]";
const std::string reading =
    place + "+[ZEBJSONSerialization JSONObjectWithData:permitMainThread:options:error:]";
const std::string unpermitted = "3" + reading + "|JSON deserialized on main thread!";

NSData bytes(std::string_view text) { return NSData::dataWithBytes(text); }

struct JSONTest : testing::Test {
  ~JSONTest() override { test::fakeClock = test::fakeClockStep = 0; }
  test::LogRecorder log;
};

TEST_F(JSONTest, ExceptionsBecomeErrorsAndLogLines) {
  const std::tuple<Value, std::string, std::string> rows[] = {
      {NSArray{NSURL::URLWithString("http://host/")}, "JSON has no such value: http://host/",
       "(\n    http://host/\n)"},
      {NSSet{1}, "The root of a JSON document must be an array or a dictionary", "{(\n    1\n)}"},
      {NSArray{std::nan("")}, "JSON has no number nan", "(\n    nan\n)"},
      {NSDictionary{{1, 2}}, "JSON keys must be strings: 1", "{\n    1 = 2;\n}"}};
  NSError existing("mine", 1);
  for (const auto& [object, reason, description] : rows) {
    NSError error;
    EXPECT_TRUE(Json::dataWithJSONObject(object, 0, &error).isNil());
    const Value exception = error.userInfo()["exception"];
    EXPECT_EQ(error, NSError(NSCocoaErrorDomain, 3852, {{"exception", exception}}));
    EXPECT_EQ(NSException::from(exception).reason(), reason);
    const std::string text = "NSInvalidArgumentException: " + reason + " (for obj " + description;
    EXPECT_EQ(log.take(),
              Lines{"3" + writing + "|exception thrown in NSJSONSerialization: " + text + ")"});
    OLGSetLevel(OLGLevelCritical);
    EXPECT_TRUE(Json::dataWithJSONObject(object, 0, &existing).isNil());
    EXPECT_TRUE(Json::dataWithJSONObject(object, 0).isNil());
    EXPECT_EQ(log.take(), Lines());
    OLGSetLevel(OLGLevelInformation);
  }
  EXPECT_EQ(existing, NSError("mine", 1));
  Value deep = 1;
  for (int i = 0; i < 513; ++i) deep = NSArray{deep};
  NSError error;
  EXPECT_TRUE(Json::dataWithJSONObject(deep, 0, &error).isNil());
  EXPECT_TRUE(error.code() == 3852 && log.take().empty()) << "an error from the start";
  EXPECT_EQ(Json::dataWithJSONObject("a/b", 12).view(), "\"a/b\"") << "with options";
}

TEST_F(JSONTest, ParsingOnTheMainThreadIsLoggedButDone) {
  EXPECT_EQ(Json::JSONObjectWithData(bytes("[1]"), 0), (NSArray{1}));
  EXPECT_EQ(log.take(), Lines{unpermitted});
  EXPECT_EQ(Json::JSONObjectWithData(bytes("17"), true, NSJSONReadingFragmentsAllowed), Value(17));
  std::thread([] { Json::JSONObjectWithData(bytes("[1]"), 0); }).join();
  OLGSetLevel(OLGLevelCritical);
  EXPECT_EQ(Json::JSONObjectWithData(bytes("[1]"), 0), (NSArray{1}));
  EXPECT_EQ(log.take(), Lines());
}

TEST_F(JSONTest, SlowWorkOnTheMainThreadIsLogged) {
  struct Indescribable : NSObject {
    std::string description() const override { throw std::runtime_error("no words"); }
  };
  NSError error;
  const auto workThreeTimes = [&](std::uint64_t nanosecondsEach) {
    test::fakeClock = 1;
    test::fakeClockStep = nanosecondsEach;
    Json::dataWithJSONObject(NSArray{1}, 0);
    Json::JSONObjectWithData(bytes("[1"), true, 0);
    // What the platform's complaint throws is none of its exceptions, and passes on.
    const Value foreign = NSArray{makeRef<Indescribable>()};
    EXPECT_THROW(Json::dataWithJSONObject(foreign, 0, &error), std::runtime_error);
  };
  const std::pair<std::uint64_t, const char*> rows[] = {
      {10'000'001, "10"}, {15'999'999, "15"}, {1'234'500'000, "1234"}};
  for (const auto& [nanoseconds, shown] : rows) {
    workThreeTimes(nanoseconds);
    const std::string slow = " on main thread is slow! " + std::string(shown) + "ms";
    const std::string written = "4" + writing + "_block_invoke|JSON serialized" + slow;
    const std::string parsed = "4" + reading + "_block_invoke|JSON deserialized" + slow;
    EXPECT_EQ(log.take(), (Lines{written, parsed, written}));
  }
  for (const NSData& none : {NSData::data(), NSData()}) {
    EXPECT_TRUE(Json::JSONObjectWithData(none, 0, &error).isNil());
    EXPECT_EQ(log.take(), Lines{unpermitted}) << "not timed";
  }
  EXPECT_TRUE(error.isNil());
  workThreeTimes(10'000'000);
  std::thread([&] { workThreeTimes(1'000'000'000); }).join();
  OLGSetLevel(OLGLevelError);
  workThreeTimes(1'000'000'000);
  EXPECT_EQ(log.take(), Lines()) << "not slow, not the main thread, not of interest";
}

TEST_F(JSONTest, TypedParsingWantsARootOfItsKind) {
  const NSError wrongKind(std::string(ZEBUtilitiesIdentifierPrefix) + ".ZEBOrvaneJSONParsing", 1);
  NSError malformed;
  NSJSONSerialization::JSONObjectWithData(bytes("{"), 0, &malformed);
  const std::tuple<const char*, Value, NSError, Value, NSError> rows[] = {
      {R"({"a":[1]})", NSDictionary{{"a", NSArray{1}}}, nullptr, nullptr, wrongKind},
      {"[{}]", nullptr, wrongKind, NSArray{NSDictionary::dictionary()}, nullptr},
      {"{", nullptr, malformed, nullptr, malformed},
      {"", nullptr, nullptr, nullptr, nullptr}};
  for (const auto& [text, dictionary, dictionaryError, array, arrayError] : rows) {
    NSError errors[2];
    EXPECT_EQ(zeb_JSONDictionary(bytes(text), &errors[0]), dictionary);
    EXPECT_EQ(zeb_JSONArray(bytes(text), &errors[1]), array);
    EXPECT_EQ(zeb_JSONArray(bytes(text)), array) << "without interest in the error";
    EXPECT_TRUE(errors[0] == dictionaryError && errors[1] == arrayError) << text;
  }
  EXPECT_EQ(log.take(), Lines(12, unpermitted));
}

TEST_F(JSONTest, PrettyPrintingGoesAroundTheGuards) {
  EXPECT_EQ(zeb_prettyPrintedJSONString(bytes("{\"k\":[1,\"é\"]}")),
            "{\n  \"k\" : [\n    1,\n    \"é\"\n  ]\n}");
  for (const char* text : {"", "{", "5"}) {
    EXPECT_TRUE(zeb_prettyPrintedJSONString(bytes(text)).isNil()) << text;
  }
  EXPECT_EQ(log.take(), Lines());
}

}  // namespace
}  // namespace zeb
