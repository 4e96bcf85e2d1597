#pragma once

#include <string>

namespace zeb {

/// The C++ name of a type or function as it is written in source code; the text itself if it is no
/// mangled name. Any thread, but not in signal handlers.
std::string demangledName(const char* mangled);

}  // namespace zeb
