#include <ZEBPlatform/RunLoop/RunLoopMode.h>

namespace zeb {

constinit const char* const NSDefaultRunLoopMode = "kCFRunLoopDefaultMode";
constinit const char* const NSRunLoopCommonModes = "kCFRunLoopCommonModes";

}  // namespace zeb
