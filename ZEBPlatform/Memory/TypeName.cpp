#include <ZEBPlatform/Memory/TypeName.h>

#include <cxxabi.h>

#include <cstdlib>
#include <memory>

namespace zeb {

std::string typeName(const std::type_info& type) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> demangled(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
  return status == 0 ? demangled.get() : type.name();
}

}  // namespace zeb
