#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace zeb {

// The program and the shared objects that the process has loaded. All functions may be called from
// any thread, also while other threads load and unload images, but not in signal handlers.

struct LoadedImage {
  std::string path;            ///< as the loader knows it
  std::uintptr_t loadAddress;  ///< of the image's first byte
};

/// The program comes first.
std::vector<LoadedImage> loadedImages();

/// What lies at an address of code.
struct CodeLocation {
  LoadedImage image{};  ///< an empty path if no image contains the address
  std::string symbol;   ///< of the function, mangled; empty if no name is known
  std::uintptr_t symbolAddress = 0;
  bool isSignalReturn = false;  ///< the code to which signal handlers return
};

/// The locations of the calls before these return addresses, in their order; on x86-64, of the
/// instruction itself for the address that follows a signal's frame. Only functions that their
/// image exports have names: all of a shared object's visible functions, and those of a program
/// that is linked with `-rdynamic`.
std::vector<CodeLocation> locationsOfCode(std::span<void* const> returnAddresses);

}  // namespace zeb
