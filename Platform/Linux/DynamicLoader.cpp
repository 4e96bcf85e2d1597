#include <Linux/DynamicLoader.h>
#include <Linux/ProcessFacts.h>

#include <dlfcn.h>
#include <link.h>

#include <filesystem>

namespace zeb {

const int dynamicLoaderLazyLocalMode = RTLD_LAZY | RTLD_LOCAL;

void* openSharedObject(const char* path, int mode) noexcept { return dlopen(path, mode); }

void* symbolInSharedObject(void* handle, const char* name) noexcept {
  // A null handle would mean the whole program to the loader.
  return handle ? dlsym(handle, name) : nullptr;
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
  // The main program's own name is empty here, and what it was called by need not be its path.
  const std::string path = *image->l_name ? image->l_name : executablePath();
  std::error_code failure;
  return std::filesystem::canonical(path, failure).parent_path().string();
}

}  // namespace zeb
