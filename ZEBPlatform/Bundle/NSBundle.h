#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <string>
#include <string_view>

namespace zeb {

/// A folder with an Info.plist that describes a program or a framework. Its Info.plist lies in the
/// folder itself or in its Contents folder, and is read once, when the bundle is made. Immutable;
/// any thread.
class NSBundle final : public NSObject {
 public:
  /// The running program's bundle; never nil. It is found once, as `bundleForExecutable` describes,
  /// unless the host has set another.
  static const Ref<NSBundle>& mainBundle();

  /// Makes the given bundle the main bundle. Must be called before the first call of `mainBundle`:
  /// after it, and for nil, this changes nothing and returns false.
  static bool setMainBundle(const Ref<NSBundle>& bundle);

  /// Nil when there is no such folder. The information dictionary is empty when the Info.plist is
  /// missing or cannot be read, see `infoDictionaryError`.
  [[nodiscard]] static Ref<NSBundle> bundleWithPath(const NSString& path);
  /// The same for hosts that have no Info.plist file. A nil dictionary counts as empty. The folder
  /// is not read and need not exist.
  [[nodiscard]] static Ref<NSBundle> bundleWithPath(const NSString& path,
                                                    const NSDictionary& infoDictionary);

  /// The bundle of the executable at an absolute path (nil for nil): the first of these that has an
  /// Info.plist, else the executable's folder.
  ///   - `<executable>.app`
  ///   - the folder around Contents, when the executable lies in a folder of Contents
  ///   - the executable's folder
  [[nodiscard]] static Ref<NSBundle> bundleForExecutable(const NSString& executablePath);

  /// Absolute, without a trailing "/".
  const NSString& bundlePath() const noexcept { return bundlePath_; }
  /// Never nil.
  const NSDictionary& infoDictionary() const noexcept { return infoDictionary_; }
  /// Why the Info.plist could not be read; nil when it was read, or does not exist.
  const NSError& infoDictionaryError() const noexcept { return infoDictionaryError_; }
  /// Nil when the key is absent.
  Value objectForInfoDictionaryKey(const StringKey& key) const noexcept {
    return infoDictionary_[key];
  }
  /// "CFBundleIdentifier"; nil without it.
  NSString bundleIdentifier() const { return NSString(infoDictionary_["CFBundleIdentifier"]); }

  /// The executable that the bundle was found for, else the one that "CFBundleExecutable" names
  /// (which need not exist); nil without both.
  NSString executablePath() const;
  /// Where the bundle's own resources and frameworks belong. The folders need not exist.
  NSString resourcePath() const;
  NSString privateFrameworksPath() const;

  std::string description() const override;

 private:
  explicit NSBundle(std::string_view path) : bundlePath_(path) {}

  static bool hasInfoDictionary(const std::string& path);
  static Ref<NSBundle> readBundle(const std::string& path);
  void readInfoDictionary(const std::string& file);
  NSString pathOfFolder(std::string_view name) const;

  const NSString bundlePath_;
  bool hasContents_ = false;  ///< whether the bundle's files are in a folder Contents
  NSString executablePath_;
  NSDictionary infoDictionary_ = NSDictionary::dictionary();
  NSError infoDictionaryError_;
};

/// The platform's key for the version of a bundle's build.
extern const char* const kCFBundleVersionKey;

}  // namespace zeb
