#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Logging/OLGLogging.h>

#include <spdlog/logger.h>
#include <spdlog/sinks/ansicolor_sink.h>

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace zeb {

namespace {

using Handler = Block<void(const OLGRecord& record)>;

std::atomic<std::int32_t> generalLevel{OLGLevelInformation};

std::atomic<bool> anyChannelLevel{false};

struct ChannelLevels {
  detail::Lock lock;
  std::map<std::string, std::int32_t, std::less<>> levels ZEB_GUARDED_BY(lock);
};

ChannelLevels& channelLevels() {
  static detail::NeverDestroyed<ChannelLevels> levels;
  return *levels;
}

struct HandlerSlot {
  detail::Lock lock;
  Handler handler ZEB_GUARDED_BY(lock);
};

HandlerSlot& handlerSlot() {
  static detail::NeverDestroyed<HandlerSlot> slot;
  return *slot;
}

struct ApplicationChannel {
  detail::Lock lock;
  NSString name ZEB_GUARDED_BY(lock);
};

ApplicationChannel& applicationChannel() {
  static detail::NeverDestroyed<ApplicationChannel> channel;
  return *channel;
}

spdlog::level::level_enum spdlogLevel(std::int32_t level) noexcept {
  if (level <= OLGLevelCritical) return spdlog::level::critical;
  if (level == OLGLevelError) return spdlog::level::err;
  if (level == OLGLevelWarning) return spdlog::level::warn;
  if (level <= OLGLevelInformation) return spdlog::level::info;
  return spdlog::level::debug;
}

spdlog::logger& standardErrorLogger() {
  static detail::NeverDestroyed<spdlog::logger> logger([] {
    spdlog::logger made("zebutilities",
                        std::make_shared<spdlog::sinks::ansicolor_stderr_sink_mt>());
    made.set_level(spdlog::level::trace);
    made.set_pattern("%Y-%m-%dT%H:%M:%S.%e [%^%l%$] %v");
    return made;
  }());
  return *logger;
}

void logToStandardError(const OLGRecord& record) {
  standardErrorLogger().log(spdlogLevel(record.level), "{}: {} ({}:{} {})", record.channel,
                            record.message, record.file, record.line, record.function);
}

}  // namespace

bool OLGCanLog(const void*, std::int32_t level, NullableText channel) noexcept {
  if (anyChannelLevel.load(std::memory_order_acquire)) {
    ChannelLevels& channels = channelLevels();
    const detail::LockGuard guard(channels.lock);
    const auto found = channels.levels.find(channel);
    if (found != channels.levels.end()) return level <= found->second;
  }
  return level <= generalLevel.load(std::memory_order_relaxed);
}

void OLGSetChannelLevel(NullableText channel, std::int32_t level) {
  ChannelLevels& channels = channelLevels();
  const detail::LockGuard guard(channels.lock);
  channels.levels.insert_or_assign(std::string(channel), level);
  anyChannelLevel.store(true, std::memory_order_release);
}

void OLGResetChannelLevel(NullableText channel) {
  ChannelLevels& channels = channelLevels();
  const detail::LockGuard guard(channels.lock);
  const auto found = channels.levels.find(channel);
  if (found != channels.levels.end()) channels.levels.erase(found);
  anyChannelLevel.store(!channels.levels.empty(), std::memory_order_release);
}

void OLGSetLevel(std::int32_t level) noexcept {
  generalLevel.store(level, std::memory_order_relaxed);
}

NSString OLGLogChannelApplicationDefault() {
  ApplicationChannel& channel = applicationChannel();
  const detail::LockGuard guard(channel.lock);
  return channel.name.isNil() ? NSString("Application") : channel.name;
}

void OLGSetLogChannelApplicationDefault(const NSString& name) {
  NSString exchanged = name.copy();  // then the old name, which is released without the lock
  ApplicationChannel& channel = applicationChannel();
  const detail::LockGuard guard(channel.lock);
  std::swap(channel.name, exchanged);
}

void OLGSetHandler(Handler handler) {
  HandlerSlot& slot = handlerSlot();
  const detail::LockGuard guard(slot.lock);
  std::swap(slot.handler, handler);
}

void OLGLogMessage(const OLGRecord& record) noexcept {
  try {
    Handler handler;
    {
      HandlerSlot& slot = handlerSlot();
      const detail::LockGuard guard(slot.lock);
      handler = slot.handler;
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
