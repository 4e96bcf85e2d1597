#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <string>
#include <string_view>

namespace zeb {

/// A folder with an Info.plist that describes a program or a framework. Its Info.plist lies in the folder
/// itself or in its Contents folder, and is read once, when the bundle is made. Immutable; any thread.
class NSBundle final : public NSObject {
 public:
  /// The running program's; never nil. It is looked for once, as `bundleForExecutable` says, unless the
  /// host has set another.
  static const Ref<NSBundle>& mainBundle();

  /// Makes the host's choice the main bundle. Must be called before anybody asks for the main bundle:
  /// afterwards, and for nil, it changes nothing and answers false.
  static bool setMainBundle(const Ref<NSBundle>& bundle);

  /// Nil when there is no such folder. A missing Info.plist makes an empty information dictionary; so does
  /// one that can't be read, see `infoDictionaryError`.
  [[nodiscard]] static Ref<NSBundle> bundleWithPath(const NSString& path);
  /// The same for hosts that have no Info.plist file; nil for a nil dictionary means an empty one. The
  /// folder is not looked at and need not be there.
  [[nodiscard]] static Ref<NSBundle> bundleWithPath(const NSString& path,
                                                    const NSDictionary& infoDictionary);

  /// The bundle that an executable at an absolute path belongs to (nil for nil): the first of these that has an Info.plist,
  /// else the executable's folder.
  ///   - `<executable>.app`
  ///   - the folder around Contents, when the executable lies in a folder of Contents
  ///   - the executable's folder
  [[nodiscard]] static Ref<NSBundle> bundleForExecutable(const NSString& executablePath);

  /// Absolute, without a trailing "/".
  const NSString& bundlePath() const noexcept { return bundlePath_; }
  /// Never nil.
  const NSDictionary& infoDictionary() const noexcept { return infoDictionary_; }
  /// Why the Info.plist could not be read; nil when there was none, or nothing wrong with it.
  const NSError& infoDictionaryError() const noexcept { return infoDictionaryError_; }
  /// Nil when the key is not there.
  Value objectForInfoDictionaryKey(const StringKey& key) const noexcept {
    return infoDictionary_[key];
  }
  /// "CFBundleIdentifier"; nil without it.
  NSString bundleIdentifier() const { return NSString(infoDictionary_["CFBundleIdentifier"]); }

  /// The executable that the bundle was found for, else the one that "CFBundleExecutable" names (it need not
  /// be there); nil without either.
  NSString executablePath() const;
  /// Where resources and frameworks of the bundle's own are expected; they need not be there.
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
  bool hasContents_ = false;  ///< whether everything lies in a folder Contents
  NSString executablePath_;
  NSDictionary infoDictionary_ = NSDictionary::dictionary();
  NSError infoDictionaryError_;
};

/// The platform's key of the version of a bundle's build.
extern const char* const kCFBundleVersionKey;

}  // namespace zeb
