#include <gtest/gtest.h>

#include <atomic>
#include <regex>
#include <stdexcept>
#include <thread>

#include "LogRecorder.h"

namespace zeb {
namespace {

void logLine(std::string_view message, std::int32_t level = OLGLevelError) {
  OLGLogMessage({nullptr, level, "channel", "file", "function", 7, message});
}

TEST(OLGLogging, LevelsAreAskedForAndHandlersGetTheWholeRecord) {
  EXPECT_TRUE(OLGCanLog(nullptr, OLGLevelInformation, "any"));
  EXPECT_FALSE(OLGCanLog(nullptr, OLGLevelDebug, "any"));
  test::LogRecorder recorder;
  OLGSetLevel(OLGLevelError);
  OLGSetChannelLevel("silent", -1);
  OLGSetChannelLevel("own", OLGLevelNotice);
  const auto loggable = [](const char* channel) {
    int levels = 0;
    for (int level = 0; level < 8; ++level) levels += OLGCanLog(nullptr, level, channel);
    return levels;
  };
  EXPECT_TRUE(loggable("silent") == 0 && loggable("own") == 6 && loggable("any") == 4);
  OLGResetChannelLevel("silent");
  OLGResetChannelLevel("own");
  EXPECT_TRUE(loggable("silent") == 4 && loggable("own") == 4);
  const int context = 0;
  OLGLogEx(nullptr, 7, "a channel", "a/file", "-[A b:]", 42, "%d %@, 100%% {}", 3, NSString("é"));
  OLGSetHandler([&](const OLGRecord& record) {
    recorder.lines.emplace_back(record.context == &context && record.line == 42 ? "same" : "other");
  });
  OLGLogEx(&context, OLGLevelDebug, "", "", "", 42, "");
  const std::vector<std::string> lines{"7|a channel|a/file|-[A b:]|3 é, 100% {}", "same"};
  EXPECT_EQ(recorder.take(), lines) << "doesn't ask";
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
  const test::LogRecorder restoring;
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
  std::atomic<int> counted = 0;
  const auto count = [&](const OLGRecord&) { ++counted; };
  OLGSetHandler(count);
  std::thread logging([] {
    for (int i = 0; i < 1000; ++i) logLine("text");
  });
  for (int i = 0; i < 1000; ++i) OLGSetHandler(count);
  logging.join();
  EXPECT_EQ(counted, 1000);
}

}  // namespace
}  // namespace zeb
