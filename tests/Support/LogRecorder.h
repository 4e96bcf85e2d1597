#pragma once

#include <ZEBPlatform/Logging/OLGLogging.h>

namespace zeb::test {

/// Takes the log over for as long as it lives and keeps its lines as
/// "level|channel|file|function|message".
struct LogRecorder {
  LogRecorder() {
    OLGSetHandler([this](const OLGRecord& line) {
      lines.push_back(formattedText(
          "%d|%s|%s|%s|%s", {line.level, line.channel, line.file, line.function, line.message}));
    });
  }
  ~LogRecorder() {
    OLGSetHandler(nullptr);
    OLGSetLevel(OLGLevelInformation);
  }
  std::vector<std::string> take() { return std::exchange(lines, {}); }

  std::vector<std::string> lines;
};

}  // namespace zeb::test
