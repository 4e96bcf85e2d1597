#include <ZEBPlatform/Dispatch/NilArgument.h>
#include <ZEBPlatform/Linux/Console.h>

#include <string>

namespace zeb::detail {

void reportNil(const char* function, const char* argument) noexcept {
  fatal(std::string(function) + " was called with nil for its " + argument + ".");
}

}  // namespace zeb::detail
