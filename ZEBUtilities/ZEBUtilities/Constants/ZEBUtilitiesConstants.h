#pragma once

namespace zeb {

/// The reverse-DNS prefix of all identifiers that the library makes: queue labels, keychain tags,
/// error domains.
extern const char* const ZEBUtilitiesIdentifierPrefix;

/// The channels of the library's log lines.
extern const char* const ZEBUtilitiesLoggingChannel_Generic;
extern const char* const ZEBUtilitiesLoggingChannel_JSON;
extern const char* const ZEBUtilitiesLoggingChannel_Timer;
extern const char* const ZEBUtilitiesLoggingChannel_Performance;

}  // namespace zeb
