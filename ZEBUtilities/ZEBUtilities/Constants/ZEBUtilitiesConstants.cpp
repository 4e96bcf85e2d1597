#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>

namespace zeb {

const char* const ZEBUtilitiesIdentifierPrefix = "org.zebutilities";

const char* const ZEBUtilitiesLoggingChannel_Generic = "ZEBUtilities";
const char* const ZEBUtilitiesLoggingChannel_JSON = "ZEBUtilitiesJSON";
const char* const ZEBUtilitiesLoggingChannel_Timer = "ZEBUtilitiesTimer";
const char* const ZEBUtilitiesLoggingChannel_Performance = "ZEBUtilitiesPerformance";

}  // namespace zeb
