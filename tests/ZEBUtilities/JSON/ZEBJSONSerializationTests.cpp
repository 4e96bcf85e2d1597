#include <ZEBUtilities/ZEBUtilities.h>

#include <cmath>

#include "Support/FakeClock.h"
#include "Support/HeldQueue.h"
#include "Support/LogRecorder.h"

namespace zeb::test {

using Json = ZEBJSONSerialization;
using Lines = std::vector<std::string>;

const std::string place = "|ZEBUtilitiesJSON|ZEBUtilities/ZEBUtilities/ZEBJSONSerialization|";
const std::string writing = place + "+[ZEBJSONSerialization dataWithJSONObject:options:error:]";
const std::string reading =
    place + "+[ZEBJSONSerialization JSONObjectWithData:permitMainThread:options:error:]";
const std::string unpermitted = "3" + reading + "|JSON deserialized on main thread!";

NSData bytes(std::string_view text) { return NSData::dataWithBytes(text); }

struct JSONTest : testing::Test {
  LogRecorder log;
};

template <class... Arguments>
concept Parses = requires(Arguments... arguments) { Json::JSONObjectWithData(arguments...); };
static_assert(!Parses<NSData, bool, NSError*> && !Parses<NSData, bool>);
static_assert(Parses<NSData, int, NSError*> && Parses<NSData, std::uint64_t>);

TEST_F(JSONTest, ExceptionsBecomeErrorsAndLogLines) {
  const std::tuple<Value, std::string, std::string> rows[] = {
      {"a", "The root of a JSON document must be an array or a dictionary", "a"},
      {NSArray{std::nan("")}, "JSON has no number nan", "(\n    nan\n)"},
      {NSDictionary{{1, 2}}, "JSON keys must be strings: 1", "{\n    1 = 2;\n}"}};
  for (const auto& [object, reason, description] : rows) {
    NSError error;
    EXPECT_TRUE(Json::dataWithJSONObject(object, 0, &error).isNil());
    const Value exception = error.userInfo()["exception"];
    EXPECT_EQ(error, NSError(NSCocoaErrorDomain, 3852, {{"exception", exception}}));
    EXPECT_EQ(NSException::from(exception).reason(), reason);
    const std::string text = "NSInvalidArgumentException: " + reason + " (for obj " + description;
    EXPECT_EQ(log.take(),
              Lines{"3" + writing + "|exception thrown in NSJSONSerialization: " + text + ")"});
  }
  OLGSetLevel(OLGLevelCritical);
  NSError existing("mine", 1);
  EXPECT_FALSE(Json::dataWithJSONObject(NSArray{NSSet{1}}, 0, &existing));
  EXPECT_FALSE(Json::dataWithJSONObject(NSSet{1}, 0));
  EXPECT_TRUE(existing == NSError("mine", 1) && log.take().empty());
  EXPECT_EQ(Json::dataWithJSONObject("a/b", 12).view(), "\"a/b\"") << "options reach the platform";
}

TEST_F(JSONTest, SlowWorkOnTheMainThreadIsLogged) {
  struct Indescribable : NSObject {
    std::string description() const override { throw std::runtime_error("no words"); }
  };
  NSError error;
  const auto workThreeTimes = [&](std::int64_t nanosecondsEach) {
    FakeClock clock;
    clock.advanceAtEachReading(nanosecondsEach);
    Json::dataWithJSONObject(NSArray{1}, 0);
    Json::JSONObjectWithData(bytes("[1"), true, 0);
    // What the platform's complaint throws is none of its exceptions, and passes on.
    const Value foreign = NSArray{makeRef<Indescribable>()};
    EXPECT_THROW(Json::dataWithJSONObject(foreign, 0, &error), std::runtime_error);
  };
  for (const unsigned nanoseconds : {10'000'001u, 15'999'999u, 1'234'500'000u}) {
    workThreeTimes(nanoseconds);
    const auto shown = std::to_string(nanoseconds / 1'000'000);
    const std::string slow = " on main thread is slow! " + shown + "ms";
    const std::string written = "4" + writing + "_block_invoke|JSON serialized" + slow;
    const std::string parsed = "4" + reading + "_block_invoke|JSON deserialized" + slow;
    EXPECT_EQ(log.take(), (Lines{written, parsed, written}));
  }
  EXPECT_TRUE(Json::JSONObjectWithData(NSData::data(), 0, &error).isNil() && error.isNil());
  EXPECT_EQ(log.take(), Lines{unpermitted}) << "not timed";
  workThreeTimes(10'000'000);
  std::thread([&] { workThreeTimes(1'000'000'000); }).join();
  EXPECT_EQ(log.take(), Lines()) << "not slow, not the main thread";
}

TEST_F(JSONTest, ParsingIsLoggedOnTheMainThreadAndWantsARootOfItsKind) {
  const NSError wrongKind(std::string(ZEBUtilitiesIdentifierPrefix) + ".ZEBOrvaneJSONParsing", 1);
  NSError error;
  EXPECT_EQ(zeb_JSONDictionary(bytes("{\"a\":[1]}"), &error), (NSDictionary{{"a", NSArray{1}}}));
  EXPECT_EQ(zeb_JSONArray(bytes("[\"a\"]"), &error), (NSArray{"a"}));
  EXPECT_TRUE(zeb_JSONArray(bytes(""), &error).isNil() && error.isNil());
  EXPECT_TRUE(zeb_JSONDictionary(bytes("[]"), &error).isNil() && error == wrongKind);
  EXPECT_TRUE(zeb_JSONArray(bytes("["), &error).isNil() && error.code() == 3840);
  EXPECT_TRUE(zeb_JSONArray(bytes("{}"), &error).isNil() && error == wrongKind);
  EXPECT_TRUE(zeb_JSONArray(bytes("{}")).isNil()) << "without interest in the error";
  EXPECT_EQ(log.take(), Lines(7, unpermitted)) << "but done";
  EXPECT_EQ(Json::JSONObjectWithData(bytes("17"), true, NSJSONReadingFragmentsAllowed), Value(17));
  std::thread([] { EXPECT_EQ(zeb_JSONArray(bytes("[1]")), (NSArray{1})); }).join();
  EXPECT_EQ(log.take(), Lines()) << "permitted, another thread";

  EXPECT_FALSE(zeb_prettyPrintedJSONString(bytes("{}")).isNil());
  EXPECT_FALSE(zeb_prettyPrintedJSONString(bytes("{")) || zeb_prettyPrintedJSONString(bytes("5")));
  EXPECT_EQ(log.take(), Lines()) << "for diagnostics, without guards";
}

TEST_F(JSONTest, WorksAsynchronouslyAndCompletesOnTheMainThread) {
  std::vector<std::string> answers;
  const auto answer = [&](const Value& result, const NSError& error) {
    EXPECT_TRUE(isMainThread());
    answers.push_back(NSString::stringWithFormat("%@ %lld", result, error.code()).utf8());
  };
  const auto complete = [&](const NSData& data, const NSError& error) {
    answer(data.isNil() ? Value() : Value(data.view()), error);
  };
  Json::decodeJSONData(bytes("[1]"), 0, answer);
  Json::decodeJSONData(bytes("[1"), 0, answer);
  Json::decodeJSONData(NSData(), 0, answer);
  Json::encodeJSONObject(NSArray{1, 2}, 0, complete);
  OLGSetLevel(OLGLevelCritical);
  Json::encodeJSONObject(NSSet{1}, 0, complete);
  EXPECT_TRUE(answers.empty()) << "never from within the call";
  runMainQueueUntil([&] { return answers.size() >= 5; });
  std::ranges::sort(answers);
  EXPECT_EQ(answers, (Lines{"(\n    1\n) 0", "(null) 0", "(null) 3840", "(null) 3852", "[1,2] 0"}));
  EXPECT_EQ(log.take(), Lines{}) << "the pool's threads may parse";
  EXPECT_EQ(raisedName([] { Json::decodeJSONData(bytes("[]"), 0, nullptr); }),
            NSInvalidArgumentException);
  EXPECT_EQ(raisedName([] { Json::encodeJSONObject(NSArray{1}, 0, nullptr); }),
            NSInvalidArgumentException);
}

}  // namespace zeb::test
