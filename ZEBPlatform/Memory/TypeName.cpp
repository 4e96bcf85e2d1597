#include <ZEBPlatform/Linux/detail/Demangling.h>
#include <ZEBPlatform/Memory/TypeName.h>

namespace zeb {

std::string typeName(const std::type_info& type) { return demangledName(type.name()); }

}  // namespace zeb
