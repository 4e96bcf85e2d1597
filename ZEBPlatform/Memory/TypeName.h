#pragma once

#include <string>
#include <typeinfo>

namespace zeb {

/// The name of a type as it is written in C++, with namespaces.
std::string typeName(const std::type_info& type);

}  // namespace zeb
