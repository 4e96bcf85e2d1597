#pragma once

#include <Keychain/KeychainItemUtils.h>
#include <ZEBPlatform/Logging/OLGLogging.h>

#include <cstdint>
#include <string>
#include <string_view>

namespace zeb::detail {

/// Writes a line to the keychain's channel. Arguments must not be secret.
template <class... Arguments>
void logKeychainLine(std::int32_t level, std::string_view file, std::string_view function,
                     std::int32_t line, std::string_view format, const Arguments&... arguments) {
  const std::string channel = KeychainItemUtils::loggingChannel().utf8();
  if (!OLGCanLog(nullptr, level, channel)) return;
  OLGLogEx(nullptr, level, channel, file, function, line, format, arguments...);
}

}  // namespace zeb::detail
