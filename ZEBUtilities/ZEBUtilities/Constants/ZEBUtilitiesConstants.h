#pragma once

namespace zeb {

/// The reverse-DNS prefix of everything that the library labels: queues, keychain tags, error domains.
extern const char* const ZEBUtilitiesIdentifierPrefix;

/// The channels that the library logs on.
extern const char* const ZEBUtilitiesLoggingChannel_Generic;
extern const char* const ZEBUtilitiesLoggingChannel_JSON;
extern const char* const ZEBUtilitiesLoggingChannel_Timer;
extern const char* const ZEBUtilitiesLoggingChannel_Performance;

}  // namespace zeb
