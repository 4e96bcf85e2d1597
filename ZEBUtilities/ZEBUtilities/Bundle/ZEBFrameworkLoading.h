#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

/// The dynamic loader's handle of an opened framework. Its owner ends the use with
/// `ZEBUnloadFramework`. Look symbols up with `symbolInSharedObject` (Linux/DynamicLoader.h) or
/// `dlsym`.
using ZEBLibraryHandle = void*;

/// Codes of the errors below. Their domain is NSPOSIXErrorDomain, and the numbers are from there.
enum : std::int64_t {
  /// The loader could not load or unload. The details contain its text under "dlerror" and, for
  /// loading, the path within the searched folders under "frameworkName".
  ZEBFrameworkErrorNotLoaded = 2,
  /// The path or the handle is nil. The error has no details.
  ZEBFrameworkErrorMissingArgument = 22,
};

/// Opens the framework "Name", "Name.framework" or "/Some/Dir/Name.framework" with the dynamic
/// loader. Searches the file Name.framework/Name in each of `directories` (texts; other values are
/// skipped), then in /System/Library/Frameworks, then in the path's own folder if it has one.
/// `mode` is passed to the loader unchanged: RTLD_LAZY and so on.
///
/// Files that the user who starts the program could choose are not loaded:
///   - Relative folders, the current one included, are not searched.
///   - The file must belong to root or the process's user, and must not be writable by its group or
///     by others. The same holds for the folders that lead to it (see Linux/FileTrust.h).
///   - A program with raised privileges (set-uid, set-gid, file capabilities) loads only files of
///     root from the installation folder that was configured when this library was built.
///
/// Returns null and the last folder's error when the file cannot be loaded from any folder. A
/// refused file is skipped, with a warning on the channel "ZEBUtilities" that contains the reason.
/// The file's own initialisers run during the call. Any thread.
ZEBLibraryHandle ZEBLoadFramework(const NSString& path, int mode,
                                  const NSArray& directories = nullptr, NSError* error = nullptr);

/// Undoes one call of `ZEBLoadFramework`. Returns false and an error on failure. A handle that is
/// not open is a programming error.
bool ZEBUnloadFramework(ZEBLibraryHandle handle, NSError* error = nullptr);

/// The folder of the frameworks that come with this library, such as UIKit, for `ZEBLoadFramework`:
/// the first of these that exists, else nil.
///   - the folder that the host has set
///   - `zebutilities/Frameworks` beside the image that holds this library
///   - the main bundle's own frameworks, if they include UIKit.framework
///   - `../lib/zebutilities/Frameworks` beside that image, for programs that are linked with the
///     static library
///   - the installation folder that was configured when the library was built; with raised
///     privileges, only this one
/// Each call searches again. Any thread.
NSString ZEBFrameworksDirectory();

/// Sets the host's folder, for other layouts; nil removes it. Must be called before the first
/// `ZEBTimer` is made that pauses in the background, because that timer loads UIKit.
void ZEBSetFrameworksDirectory(const NSString& directory);

}  // namespace zeb
