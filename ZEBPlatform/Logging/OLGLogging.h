#pragma once

#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/NullableText.h>
#include <ZEBPlatform/Memory/Block.h>

#include <cstdint>
#include <string_view>

namespace zeb {

/// How serious a log line is; numbered as syslog does.
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

/// One line on its way to the log. Everything is valid during the call only. Texts are UTF-8.
struct OLGRecord {
  const void* context;  ///< whatever the logging code passed; this library passes null
  std::int32_t level;
  std::string_view channel;
  std::string_view file;      ///< source path of the logging code
  std::string_view function;  ///< full name of the logging function
  std::int32_t line;
  std::string_view message;
};

/// Whether a line would be logged: asked before any formatting, costs a comparison while no channel has a
/// level of its own. Any thread.
bool OLGCanLog(const void* context, std::int32_t level, NullableText channel) noexcept;

/// Logs `message` as it is. Any thread; nothing is thrown. In the child of a fork that another thread of the
/// parent logged through, this may wait for ever, as everything may that takes a lock.
void OLGLogMessage(const OLGRecord& record) noexcept;

/// Logs a line after a format (see Foundation/Format.h). Does not ask `OLGCanLog`. Null texts are empty.
template <class... Arguments>
void OLGLogEx(const void* context, std::int32_t level, NullableText channel, NullableText file,
              NullableText function, std::int32_t line, NullableText format,
              const Arguments&... arguments) {
  // One expression, because arguments may be looked at through temporaries.
  OLGLogMessage({context, level, channel, file, function, line,
                 formattedText(format, {FormatArgument(arguments)...})});
}

/// The least serious level that is logged; OLGLevelInformation at first. Any thread.
void OLGSetLevel(std::int32_t level) noexcept;

/// The same for one channel, whatever the general level is; a negative level silences it. Any thread.
void OLGSetChannelLevel(NullableText channel, std::int32_t level);
/// Lets the channel go by the general level again.
void OLGResetChannelLevel(NullableText channel);

/// Lets the host take the lines over: from now on every line goes to `handler`, on the thread that
/// logs it and possibly from several at once; nil gives them back to standard error. The handler is
/// called without any lock held; what it throws is dropped. Any thread.
void OLGSetHandler(Block<void(const OLGRecord& record)> handler);

}  // namespace zeb
