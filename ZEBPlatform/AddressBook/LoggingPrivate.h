#pragma once

#include <ZEBPlatform/AddressBook/CNContactStore.h>
#include <ZEBPlatform/Logging/OLGLogging.h>

#include <string>

namespace zeb::detail {

/// Logs a line of the address book. `file` and `function` are those of the logging code.
inline void logAddressBook(OLGLevel level, const char* file, const char* function, int line,
                           const std::string& message) {
  if (OLGCanLog(nullptr, level, CNLoggingChannel))
    OLGLogMessage({nullptr, level, CNLoggingChannel, file, function, line, message});
}

}  // namespace zeb::detail
