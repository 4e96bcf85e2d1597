#include <ZEBPlatform/Bundle/NSBundle.h>
#include <ZEBPlatform/Bundle/NSPropertyListSerialization.h>
#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Linux/detail/FileReading.h>
#include <ZEBPlatform/Linux/detail/ProcessFacts.h>

#include <cerrno>
#include <filesystem>

namespace zeb {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view infoFile = "/Info.plist";
constexpr std::string_view contentsFolder = "/Contents";

bool exists(const std::string& path) {
  std::error_code failure;
  return fs::exists(path, failure);
}

bool isFolder(const std::string& path) {
  std::error_code failure;
  return fs::is_directory(path, failure);
}

std::string absolutePath(const NSString& path) {
  std::error_code failure;
  std::string absolute = fs::absolute(path.utf8(), failure).lexically_normal().string();
  while (absolute.size() > 1 && absolute.ends_with('/')) absolute.pop_back();
  return absolute;
}

std::string joined(std::string_view folder, std::string_view name) {
  return std::string(folder).append(name);
}

struct MainBundle {
  detail::Lock lock;
  /// Changed with the lock held, and never again after it was asked for: from then on references to
  /// it are used without the lock.
  Ref<NSBundle> bundle;
  bool isAskedFor ZEB_GUARDED_BY(lock) = false;
};

MainBundle& mainBundleSlot() {
  static detail::NeverDestroyed<MainBundle> slot;
  return *slot;
}

}  // namespace

const char* const kCFBundleVersionKey = "CFBundleVersion";

const Ref<NSBundle>& NSBundle::mainBundle() {
  MainBundle& slot = mainBundleSlot();
  const detail::LockGuard guard(slot.lock);
  if (!slot.bundle) slot.bundle = bundleForExecutable(zeb::executablePath());
  slot.isAskedFor = true;
  return slot.bundle;
}

bool NSBundle::setMainBundle(const Ref<NSBundle>& bundle) {
  MainBundle& slot = mainBundleSlot();
  const detail::LockGuard guard(slot.lock);
  if (!bundle || slot.isAskedFor) return false;
  slot.bundle = bundle;
  return true;
}

Ref<NSBundle> NSBundle::bundleWithPath(const NSString& path) {
  if (path.isNil()) return nullptr;
  const std::string absolute = absolutePath(path);
  return isFolder(absolute) ? readBundle(absolute) : nullptr;
}

Ref<NSBundle> NSBundle::bundleWithPath(const NSString& path, const NSDictionary& infoDictionary) {
  if (path.isNil()) return nullptr;
  auto bundle = Ref<NSBundle>::adopt(new NSBundle(absolutePath(path)));
  if (!infoDictionary.isNil()) bundle->infoDictionary_ = infoDictionary.copy();
  return bundle;
}

Ref<NSBundle> NSBundle::bundleForExecutable(const NSString& executablePath) {
  if (executablePath.isNil()) return nullptr;
  const std::string executable = executablePath.utf8();
  const fs::path folder = fs::path(executable).parent_path();
  std::string path = executable + ".app";
  if (!hasInfoDictionary(path)) {
    const fs::path outer = folder.parent_path();
    const bool isInContents = outer.filename() == contentsFolder.substr(1);
    path = isInContents ? outer.parent_path().string() : std::string();
    if (!isInContents || !hasInfoDictionary(path)) path = folder.string();
  }
  Ref<NSBundle> bundle = readBundle(path);
  bundle->executablePath_ = executablePath;
  return bundle;
}

bool NSBundle::hasInfoDictionary(const std::string& path) {
  return exists(joined(path, infoFile)) || exists(joined(path, contentsFolder).append(infoFile));
}

Ref<NSBundle> NSBundle::readBundle(const std::string& path) {
  auto bundle = Ref<NSBundle>::adopt(new NSBundle(path));
  std::string file = joined(path, infoFile);
  if (!exists(file)) {
    const std::string inner = joined(path, contentsFolder).append(infoFile);
    bundle->hasContents_ = exists(inner);
    if (bundle->hasContents_) file = inner;
  }
  bundle->readInfoDictionary(file);
  return bundle;
}

void NSBundle::readInfoDictionary(const std::string& file) {
  std::string content;
  const int failure = readWholeFile(file, NSPropertyListMaximumSize, content);
  if (failure == ENOENT) return;
  if (failure) {
    const NSString text =
        NSString::stringWithFormat("%s can't be read: %s.", file, textOfErrorNumber(failure));
    infoDictionaryError_ =
        NSError(NSPOSIXErrorDomain, failure, {{NSString(NSLocalizedDescriptionKey), text}});
    return;
  }
  const Value root = NSPropertyListSerialization::propertyListWithData(
      NSData::dataWithBytes(content), 0, nullptr, &infoDictionaryError_);
  if (root.isDictionary()) {
    infoDictionary_ = NSDictionary(root);
  } else if (!root.isNil()) {
    const NSString text = NSString::stringWithFormat("%s holds no dictionary.", file);
    infoDictionaryError_ = NSError(NSCocoaErrorDomain, NSPropertyListReadCorruptError,
                                   {{NSString(NSLocalizedDescriptionKey), text}});
  }
}

NSString NSBundle::pathOfFolder(std::string_view name) const {
  std::string path = bundlePath_.utf8();
  if (hasContents_) path += contentsFolder;
  if (!name.empty()) path.append("/").append(name);
  return path;
}

NSString NSBundle::executablePath() const {
  if (!executablePath_.isNil()) return executablePath_;
  const NSString name(infoDictionary_["CFBundleExecutable"]);
  if (name.isNil()) return nullptr;
  return pathOfFolder(hasContents_ ? "MacOS/" + name.utf8() : name.utf8());
}

NSString NSBundle::resourcePath() const { return pathOfFolder(hasContents_ ? "Resources" : ""); }
NSString NSBundle::privateFrameworksPath() const { return pathOfFolder("Frameworks"); }

std::string NSBundle::description() const {
  return NSString::stringWithFormat("NSBundle <%@>", bundlePath_).utf8();
}

}  // namespace zeb
