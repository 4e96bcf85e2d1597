#pragma once

#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/NullableText.h>
#include <ZEBPlatform/Memory/Block.h>

#include <cstdint>
#include <string_view>

namespace zeb {

/// How serious a log line is, with syslog's numbers.
enum OLGLevel : std::int32_t {
  OLGLevelEmergency = 0,
  OLGLevelAlert = 1,
  OLGLevelCritical = 2,
  OLGLevelError = 3,
  OLGLevelWarning = 4,
  OLGLevelNotice = 5,
  OLGLevelInformation = 6,
  OLGLevelDebug = 7,
};

/// One log line. All pointers are valid during the call only. Texts are UTF-8.
struct OLGRecord {
  const void* context;  ///< the pointer that the logging code passed; this library passes null
  std::int32_t level;
  std::string_view channel;
  std::string_view file;      ///< source path of the logging code
  std::string_view function;  ///< full name of the logging function
  std::int32_t line;
  std::string_view message;
};

/// Whether a line would be logged. Ask before formatting; costs one comparison while no channel has
/// a level of its own. Any thread.
bool OLGCanLog(const void* context, std::int32_t level, NullableText channel) noexcept;

/// Logs `message` without formatting it. Any thread; throws nothing. Takes a lock, and so may
/// deadlock in a forked child if another thread of the parent was logging during the fork.
void OLGLogMessage(const OLGRecord& record) noexcept;

/// Logs a formatted line (see Foundation/Format.h). Does not call `OLGCanLog`. Null texts count as
/// empty.
template <class... Arguments>
void OLGLogEx(const void* context, std::int32_t level, NullableText channel, NullableText file,
              NullableText function, std::int32_t line, NullableText format,
              const Arguments&... arguments) {
  // One expression, because arguments may refer to temporaries.
  OLGLogMessage({context, level, channel, file, function, line,
                 formattedText(format, {FormatArgument(arguments)...})});
}

/// Sets the least serious level that is logged; OLGLevelInformation at first. Any thread.
void OLGSetLevel(std::int32_t level) noexcept;

/// Sets the level of one channel, which replaces the general level for it. A negative level
/// silences the channel. Any thread.
void OLGSetChannelLevel(NullableText channel, std::int32_t level);
/// Lets the general level apply to the channel again.
void OLGResetChannelLevel(NullableText channel);

/// The application's own channel, "Application" unless the host has set another. Parts of this
/// library that log on behalf of the application derive the names of their channels from it. Set it
/// before they log for the first time, because they keep their names; nil restores the first one.
/// Any thread.
NSString OLGLogChannelApplicationDefault();
void OLGSetLogChannelApplicationDefault(const NSString& name);

/// Gives all log lines to the host: from now on `handler` is called with every line, on the thread
/// that logs it and possibly on several threads at once. Nil restores the output to standard error.
/// The handler is called without a lock held; exceptions from it are dropped. Any thread.
void OLGSetHandler(Block<void(const OLGRecord& record)> handler);

}  // namespace zeb
