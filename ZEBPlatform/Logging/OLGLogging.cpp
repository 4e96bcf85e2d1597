#include <ZEBPlatform/Logging/OLGLogging.h>

#include <spdlog/logger.h>
#include <spdlog/sinks/ansicolor_sink.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <string>

namespace zeb {

namespace {

using Handler = Block<void(const OLGRecord& record)>;

std::atomic<std::int32_t> generalLevel{OLGLevelInformation};

std::atomic<bool> anyChannelLevel{false};

struct ChannelLevels {
  std::shared_mutex mutex;
  std::map<std::string, std::int32_t, std::less<>> levels;
};

/// Never destroyed: static objects may log while the process exits.
ChannelLevels& channelLevels() {
  static auto* levels = new ChannelLevels;
  return *levels;
}

struct HandlerSlot {
  std::mutex mutex;
  Handler handler;
};

/// Never destroyed, for the same reason.
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

bool OLGCanLog(const void*, std::int32_t level, NullableText channel) noexcept {
  if (anyChannelLevel.load(std::memory_order_acquire)) {
    std::shared_lock guard(channelLevels().mutex);
    const auto found = channelLevels().levels.find(channel);
    if (found != channelLevels().levels.end()) return level <= found->second;
  }
  return level <= generalLevel.load(std::memory_order_relaxed);
}

void OLGSetChannelLevel(NullableText channel, std::int32_t level) {
  std::unique_lock guard(channelLevels().mutex);
  channelLevels().levels.insert_or_assign(std::string(channel), level);
  anyChannelLevel.store(true, std::memory_order_release);
}

void OLGResetChannelLevel(NullableText channel) {
  std::unique_lock guard(channelLevels().mutex);
  const auto found = channelLevels().levels.find(channel);
  if (found != channelLevels().levels.end()) channelLevels().levels.erase(found);
  anyChannelLevel.store(!channelLevels().levels.empty(), std::memory_order_release);
}

void OLGSetLevel(std::int32_t level) noexcept {
  generalLevel.store(level, std::memory_order_relaxed);
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
    // A line that cannot be logged must not stop the code that logs it.
  }
}

}  // namespace zeb
