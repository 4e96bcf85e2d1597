#pragma once

#include <string>

namespace zeb {

/// The dynamic loader: opening shared objects at run time and looking up what they export. Modes are the
/// loader's own RTLD_… flags; a program that includes <dlfcn.h> passes those. Any thread.

/// RTLD_LAZY | RTLD_LOCAL: for those who don't include <dlfcn.h>.
extern const int dynamicLoaderLazyLocalMode;

/// Why a shared object was not opened.
struct OpeningFailure {
  std::string text;
  bool isRefusal = false;  ///< it is there, but others could have changed it
};

/// A handle to the shared object at an absolute path, or null and why. Opening it again counts. Links are
/// followed first; what others than root and the process's user could change (`reasonToDistrust`,
/// Linux/FileTrust.h) is not opened.
void* openSharedObject(const std::string& path, int mode, OpeningFailure& failure);

/// The address of an exported symbol; null when either is null, and when there is no such symbol.
void* symbolInSharedObject(void* handle, const char* name) noexcept;

/// Ends one opening. Not 0 on failure; `dynamicLoaderError` then tells why.
int closeSharedObject(void* handle) noexcept;

/// The calling thread's last loader error, which is forgotten with this; empty when there is none.
std::string dynamicLoaderError();

/// The absolute folder of the program or shared object that the address lies in, without a trailing "/";
/// empty when it lies in none.
std::string folderOfImageHolding(const void* address);

}  // namespace zeb
