#include <Bundle/NSBundle.h>
#include <Linux/DynamicLoader.h>
#include <ZEBUtilities/ZEBFrameworkLoading.h>

#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>

namespace zeb {

namespace {

constexpr std::string_view frameworkSuffix = ".framework";
constexpr std::string_view ownFolder = "/zebutilities/Frameworks";

void report(NSError* error, std::int64_t code, const NSDictionary& details) {
  if (error) *error = NSError(NSPOSIXErrorDomain, code, details);
}

std::string loaderText() {
  const std::string text = dynamicLoaderError();
  return text.empty() ? "Unknown dlopen error" : text;
}

/// A path's folder, with its "/", and the framework that its last component names.
struct FrameworkPath {
  std::string_view folder;
  std::string_view name;

  explicit FrameworkPath(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
    const std::size_t begin = path.rfind('/') + 1;
    folder = path.substr(0, begin);
    name = path.substr(begin);
    if (name.ends_with(frameworkSuffix)) name.remove_suffix(frameworkSuffix.size());
  }
};

std::string joined(std::string_view folder, std::string_view path) {
  std::string result(folder);
  if (!folder.empty() && !folder.ends_with('/')) result += '/';
  return result.append(path);
}

struct HostsChoice {
  std::mutex mutex;
  NSString directory;
};

/// Never destroyed: other static objects may ask while the process ends.
HostsChoice& hostsChoice() {
  static auto* choice = new HostsChoice;
  return *choice;
}

bool isFolder(const std::string& path) {
  std::error_code failure;
  return std::filesystem::is_directory(path, failure);
}

}  // namespace

ZEBLibraryHandle ZEBLoadFramework(const NSString& path, int mode, const NSArray& directories,
                                  NSError* error) {
  if (path.isNil()) {
    report(error, ZEBFrameworkErrorMissingArgument, nullptr);
    return nullptr;
  }
  const std::string text = path.utf8();
  const FrameworkPath parts(text);
  const std::string binary = joined(std::string(parts.name).append(frameworkSuffix), parts.name);

  std::string failure;
  const auto open = [&](std::string_view folder) {
    const ZEBLibraryHandle handle = openSharedObject(joined(folder, binary).c_str(), mode);
    if (!handle) failure = loaderText();
    return handle;
  };
  for (const Value& directory : directories) {
    if (!directory.isString()) continue;
    if (const ZEBLibraryHandle handle = open(NSString(directory).utf8())) return handle;
  }
  for (const std::string_view folder :
       {std::string_view("/System/Library/Frameworks"), parts.folder}) {
    if (const ZEBLibraryHandle handle = open(folder)) return handle;
  }
  report(error, ZEBFrameworkErrorNotLoaded, {{"frameworkName", binary}, {"dlerror", failure}});
  return nullptr;
}

bool ZEBUnloadFramework(ZEBLibraryHandle handle, NSError* error) {
  if (!handle) {
    report(error, ZEBFrameworkErrorMissingArgument, nullptr);
    return false;
  }
  if (closeSharedObject(handle) == 0) return true;
  report(error, ZEBFrameworkErrorNotLoaded, {{"dlerror", loaderText()}});
  return false;
}

NSString ZEBFrameworksDirectory() {
  {
    HostsChoice& choice = hostsChoice();
    const std::lock_guard lock(choice.mutex);
    if (!choice.directory.isNil()) return choice.directory;
  }
  const std::string image = folderOfImageHolding(reinterpret_cast<const void*>(&hostsChoice));
  const std::string bundled = NSBundle::mainBundle()->privateFrameworksPath().utf8();
  if (std::string own = joined(image, ownFolder.substr(1)); isFolder(own)) return own;
  if (isFolder(bundled + "/UIKit.framework")) return bundled;
  for (const std::string& libraries :
       {image + "/../" ZEB_LIBRARY_FOLDER, std::string(ZEB_INSTALLED_LIBRARY_FOLDER)}) {
    std::string own = std::string(libraries).append(ownFolder);
    if (isFolder(own)) return std::filesystem::path(own).lexically_normal().string();
  }
  return nullptr;
}

void ZEBSetFrameworksDirectory(const NSString& directory) {
  const NSString copy = directory.copy();
  HostsChoice& choice = hostsChoice();
  const std::lock_guard lock(choice.mutex);
  choice.directory = copy;
}

}  // namespace zeb
