#include <gtest/gtest.h>

#include <regex>

#include "Support/LogRecorder.h"

namespace zeb::test {

static void logLine(std::string_view message, std::int32_t level = OLGLevelError) {
  OLGLogMessage({nullptr, level, "channel", "file", "function", 7, message});
}

TEST(OLGLogging, LevelsFilterAndHandlersGetTheWholeRecord) {
  EXPECT_TRUE(OLGCanLog(nullptr, 5, "any") && !OLGCanLog(nullptr, OLGLevelDebug, "any"));
  LogRecorder recorder;
  OLGSetLevel(OLGLevelError);
  OLGSetChannelLevel("own", OLGLevelNotice);
  EXPECT_TRUE(OLGCanLog(nullptr, OLGLevelNotice, "own") && OLGCanLog(nullptr, 3, "any"));
  EXPECT_FALSE(OLGCanLog(nullptr, OLGLevelInformation, "own") || OLGCanLog(nullptr, 4, "any"));
  OLGResetChannelLevel("own");
  OLGSetLogChannelApplicationDefault("app");
  EXPECT_EQ(OLGLogChannelApplicationDefault(), NSString("app"));
  EXPECT_FALSE(OLGCanLog(nullptr, OLGLevelNotice, "own"));
  OLGLogEx(nullptr, 7, "a channel", "a/file", "-[A b:]", 42, "%d %@, 100%% {}", 3, NSString("é"));
  EXPECT_EQ(recorder.take().at(0), "7|a channel|a/file|-[A b:]|3 é, 100% {}")
      << "does not check the level";
  const char* const none = nullptr;
  EXPECT_TRUE(OLGCanLog(none, OLGLevelError, none));
  OLGLogEx(none, 7, none, none, none, 0, none);
  EXPECT_EQ(recorder.take().at(0), "7||||") << "null texts are empty";
  OLGSetHandler([&](const OLGRecord& record) {
    EXPECT_TRUE(record.context == &recorder && record.line == 42);
  });
  OLGLogEx(&recorder, OLGLevelDebug, "", "", "", 42, "");
}

TEST(OLGLogging, WithoutAHandlerLinesGoToStandardError) {
  testing::internal::CaptureStderr();
  std::string expected;
  for (const auto& [level, name] : {std::pair{1, "critical"}, {3, "error"}, {5, "info"}}) {
    logLine("{} %s é", level);
    expected += R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3} \[)" + std::string(name) +
                R"(\] channel: \{\} %s é \(file:7 function\)\n)";
  }
  const std::string written = testing::internal::GetCapturedStderr();
  EXPECT_TRUE(std::regex_match(written, std::regex(expected))) << written;
}

TEST(OLGLogging, HandlersMayThrowLogAndBeReplacedAnyTime) {
  const LogRecorder restoring;
  OLGSetHandler([](const OLGRecord&) { throw std::runtime_error("dropped"); });
  logLine("text");
  std::string order;
  OLGSetHandler([&](const OLGRecord& first) {
    OLGSetHandler([&](const OLGRecord& second) { order.append(second.message); });
    logLine("inner ");
    order.append(first.message);
  });
  logLine("outer");
  EXPECT_EQ(order, "inner outer");
}

}  // namespace zeb::test
