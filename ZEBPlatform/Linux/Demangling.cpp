#include <ZEBPlatform/Linux/detail/Demangling.h>

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace zeb {

std::string demangledName(const char* mangled) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(mangled, nullptr, nullptr, &status), &std::free);
  return status == 0 ? name.get() : mangled;
}

}  // namespace zeb
