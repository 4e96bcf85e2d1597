#pragma once

#include <ZEBPlatform/Linux/detail/Console.h>

#include <string>

namespace zeb::detail {

/// Stops the process: a class of the bridge was asked for an object made of nothing.
[[noreturn]] inline void stopForPlainInit(const char* className) {
  fatal(std::string("Use of unimplemented initializer 'init()' for class 'ZEBUtilities.") +
        className + "'");
}

}  // namespace zeb::detail
