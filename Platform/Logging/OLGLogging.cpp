#include <Logging/OLGLogging.h>

#include <spdlog/logger.h>
#include <spdlog/sinks/ansicolor_sink.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

namespace zeb {

namespace {

using Handler = Block<void(const OLGRecord& record)>;

std::atomic<std::int32_t> leastSeriousLevel{OLGLevelInformation};

struct HandlerSlot {
  std::mutex mutex;
  Handler handler;
};

/// Never destroyed: other static objects may log while the process ends.
HandlerSlot& handlerSlot() {
  static auto* slot = new HandlerSlot;
  return *slot;
}

spdlog::level::level_enum spdlogLevel(std::int32_t level) noexcept {
  if (level <= OLGLevelCritical) return spdlog::level::critical;
  if (level == OLGLevelError) return spdlog::level::err;
  if (level == OLGLevelWarning) return spdlog::level::warn;
  if (level <= OLGLevelInformation) return spdlog::level::info;
  return spdlog::level::debug;
}

spdlog::logger& standardErrorLogger() {
  static auto* logger = [] {
    auto sink = std::make_shared<spdlog::sinks::ansicolor_stderr_sink_mt>();
    auto* made = new spdlog::logger("zebutilities", std::move(sink));
    made->set_level(spdlog::level::trace);
    made->set_pattern("%Y-%m-%dT%H:%M:%S.%e [%^%l%$] %v");
    return made;
  }();
  return *logger;
}

void logToStandardError(const OLGRecord& record) {
  standardErrorLogger().log(spdlogLevel(record.level), "{}: {} ({}:{} {})", record.channel,
                            record.message, record.file, record.line, record.function);
}

}  // namespace

bool OLGCanLog(const void*, std::int32_t level, std::string_view) noexcept {
  return level <= leastSeriousLevel.load(std::memory_order_relaxed);
}

void OLGSetLevel(std::int32_t level) noexcept {
  leastSeriousLevel.store(level, std::memory_order_relaxed);
}

void OLGSetHandler(Handler handler) {
  std::lock_guard guard(handlerSlot().mutex);
  std::swap(handlerSlot().handler, handler);
}

void OLGLogMessage(const OLGRecord& record) noexcept {
  try {
    Handler handler;
    {
      std::lock_guard guard(handlerSlot().mutex);
      handler = handlerSlot().handler;
    }
    if (handler) {
      handler(record);
    } else {
      logToStandardError(record);
    }
  } catch (...) {
    // A line that can't be logged must not bring down the code that wanted to log it.
  }
}

}  // namespace zeb
