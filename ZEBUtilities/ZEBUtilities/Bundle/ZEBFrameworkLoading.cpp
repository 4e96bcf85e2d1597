#include <ZEBPlatform/Bundle/NSBundle.h>
#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Linux/DynamicLoader.h>
#include <ZEBPlatform/Linux/detail/FileTrust.h>
#include <ZEBPlatform/Logging/OLGLogging.h>
#include <ZEBUtilities/Bundle/ZEBFrameworkLoading.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

namespace {

constexpr std::string_view frameworkSuffix = ".framework";
constexpr std::string_view ownFolder = "/zebutilities/Frameworks";
constexpr const char* installedFolder = ZEB_INSTALLED_LIBRARY_FOLDER "/zebutilities/Frameworks";

void report(NSError* error, std::int64_t code, const NSDictionary& details) {
  if (error) *error = NSError(NSPOSIXErrorDomain, code, details);
}

std::string orUnknown(const std::string& loaderText) {
  return loaderText.empty() ? "Unknown dlopen error" : loaderText;
}

/// The folder of a path, with its "/", and the name of the framework in its last component.
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

/// Logged, because the error describes the last folder only, and a refused file was meant to be
/// loaded.
void logRefusal(const OpeningFailure& failure) {
  const char* channel = ZEBUtilitiesLoggingChannel_Generic;
  if (!OLGCanLog(nullptr, OLGLevelWarning, channel)) return;
  OLGLogEx(nullptr, OLGLevelWarning, channel, "ZEBUtilities/ZEBUtilities/ZEBFrameworkLoading",
           "ZEBLoadFramework", __LINE__, "%@", failure.text);
}

std::vector<std::string> searchedFolders(const NSArray& directories, std::string_view pathsFolder) {
  if (hasRaisedPrivileges()) return {installedFolder};
  std::vector<std::string> folders;
  for (const Value& directory : directories) {
    // An empty text would mean the current folder.
    if (NSString(directory).length() > 0) folders.push_back(NSString(directory).utf8());
  }
  folders.emplace_back("/System/Library/Frameworks");
  if (!pathsFolder.empty()) folders.emplace_back(pathsFolder);
  return folders;
}

struct HostsChoice {
  detail::Lock lock;
  NSString directory ZEB_GUARDED_BY(lock);
};

HostsChoice& hostsChoice() {
  static detail::NeverDestroyed<HostsChoice> choice;
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

  OpeningFailure failure;
  for (const std::string& folder : searchedFolders(directories, parts.folder)) {
    if (void* const handle = openSharedObject(joined(folder, binary), mode, failure)) return handle;
    if (failure.isRefusal) logRefusal(failure);
  }
  report(error, ZEBFrameworkErrorNotLoaded,
         {{"frameworkName", binary}, {"dlerror", orUnknown(failure.text)}});
  return nullptr;
}

bool ZEBUnloadFramework(ZEBLibraryHandle handle, NSError* error) {
  if (!handle) {
    report(error, ZEBFrameworkErrorMissingArgument, nullptr);
    return false;
  }
  if (closeSharedObject(handle) == 0) return true;
  report(error, ZEBFrameworkErrorNotLoaded, {{"dlerror", orUnknown(dynamicLoaderError())}});
  return false;
}

NSString ZEBFrameworksDirectory() {
  if (hasRaisedPrivileges())
    return isFolder(installedFolder) ? NSString(installedFolder) : NSString();
  {
    HostsChoice& choice = hostsChoice();
    const detail::LockGuard guard(choice.lock);
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
  const detail::LockGuard guard(choice.lock);
  choice.directory = copy;
}

}  // namespace zeb
