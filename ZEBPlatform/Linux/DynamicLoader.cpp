#include <ZEBPlatform/Linux/DynamicLoader.h>
#include <ZEBPlatform/Linux/detail/FileTrust.h>
#include <ZEBPlatform/Linux/detail/ProcessFacts.h>

#include <dlfcn.h>
#include <link.h>

#include <filesystem>

namespace zeb {

const int dynamicLoaderLazyLocalMode = RTLD_LAZY | RTLD_LOCAL;

void* openSharedObject(const std::string& path, int mode, OpeningFailure& failure) {
  if (!path.starts_with('/')) {
    failure = {path + ": not opened, because the path is relative; name an absolute one"};
    return nullptr;
  }
  std::error_code missing;
  const std::string file = std::filesystem::canonical(path, missing).string();
  if (missing) {
    failure = {path + ": " + missing.message()};
    return nullptr;
  }
  std::string distrust = reasonToDistrust(file);
  // The loader would replace $ORIGIN and similar names in the path, and open another file.
  if (file.find('$') != std::string::npos) distrust = "the loader gives \"$\" a meaning";
  if (!distrust.empty()) {
    failure = {path + ": not opened, because " + distrust, true};
    return nullptr;
  }
  void* handle = dlopen(file.c_str(), mode);
  if (!handle) failure = {dynamicLoaderError()};
  return handle;
}

void* symbolInSharedObject(void* handle, const char* name) noexcept {
  // The loader takes a null handle for the whole program.
  return handle && name ? dlsym(handle, name) : nullptr;
}

int closeSharedObject(void* handle) noexcept { return dlclose(handle); }

std::string dynamicLoaderError() {
  const char* text = dlerror();
  return text ? text : "";
}

std::string folderOfImageHolding(const void* address) {
  Dl_info info;
  link_map* image = nullptr;
  if (!dladdr1(address, &info, reinterpret_cast<void**>(&image), RTLD_DL_LINKMAP)) return {};
  // The main program's name is empty here, and the name that it was called by need not be its path.
  const std::string path = *image->l_name ? image->l_name : executablePath();
  std::error_code failure;
  return std::filesystem::canonical(path, failure).parent_path().string();
}

}  // namespace zeb
