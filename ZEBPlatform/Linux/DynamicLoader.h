#pragma once

#include <string>

namespace zeb {

// The dynamic loader: opens shared objects at run time and looks up their exported symbols. Modes
// are the loader's RTLD_… flags of <dlfcn.h>. All functions may be called from any thread.

/// RTLD_LAZY | RTLD_LOCAL, for callers that do not include <dlfcn.h>.
extern const int dynamicLoaderLazyLocalMode;

/// Why a shared object was not opened.
struct OpeningFailure {
  std::string text;
  bool isRefusal = false;  ///< it exists, but other users could have changed it
};

/// Answers a handle to the shared object at an absolute path; or null, and the reason in `failure`.
/// Each opening needs its own `closeSharedObject`. Links are followed first. A file that users
/// other than root and the process's user could change (`reasonToDistrust`,
/// Linux/detail/FileTrust.h) is not opened.
void* openSharedObject(const std::string& path, int mode, OpeningFailure& failure);

/// The address of an exported symbol; null if either argument is null or there is no such symbol.
void* symbolInSharedObject(void* handle, const char* name) noexcept;

/// Ends one opening. Answers 0, or another number on failure; `dynamicLoaderError` then has the
/// reason.
int closeSharedObject(void* handle) noexcept;

/// The calling thread's last loader error, which the call clears; empty if there is none.
std::string dynamicLoaderError();

/// The absolute folder of the program or shared object that contains the address, without a
/// trailing "/"; empty if there is none.
std::string folderOfImageHolding(const void* address);

}  // namespace zeb
