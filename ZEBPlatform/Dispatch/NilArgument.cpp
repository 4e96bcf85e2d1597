#include <ZEBPlatform/Dispatch/detail/NilArgument.h>
#include <ZEBPlatform/Linux/detail/Console.h>

#include <string>

namespace zeb::detail {

void reportNil(const char* function, const char* argument) noexcept {
  fatal(std::string(function) + " was called with nil for its " + argument + ".");
}

}  // namespace zeb::detail
