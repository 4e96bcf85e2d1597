#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

/// What the dynamic loader knows an opened framework by. Its owner passes it to `ZEBUnloadFramework` in the
/// end; symbols are looked up with `symbolInSharedObject` (Linux/DynamicLoader.h) or `dlsym`.
using ZEBLibraryHandle = void*;

/// Codes of the errors below; their domain is NSPOSIXErrorDomain, whose numbers these are.
enum : std::int64_t {
  /// The loader could not load or unload: "dlerror" has its text and, for loading, "frameworkName" the path
  /// within the folders that were searched.
  ZEBFrameworkErrorNotLoaded = 2,
  /// The path or the handle is missing. No details.
  ZEBFrameworkErrorMissingArgument = 22,
};

/// Opens the framework "Name", "Name.framework" or "/Some/Dir/Name.framework" with the dynamic loader: the
/// file Name.framework/Name, in each of `directories` (texts; others are passed over), then in
/// /System/Library/Frameworks, then in the path's own folder if it has one. `mode` goes to the loader as it
/// is: RTLD_LAZY and so on.
///
/// What whoever starts the program could choose is not loaded:
///   - Nothing is looked for in relative folders, the current one included.
///   - The file must belong to root or the process's user, and must not be writable by its group or by others;
///     nor may others be able to change the folders that lead to it (see Linux/FileTrust.h).
///   - A program with raised privileges (set-uid, set-gid, file capabilities) loads only from the folder where
///     this library was to be installed when it was built, and only what belongs to root.
///
/// Null and the last folder's error when none of them has it. A file that is there but refused is passed over
/// with a warning on the channel "ZEBUtilities" that says why. A file's own initialisers run during the call.
/// Any thread.
ZEBLibraryHandle ZEBLoadFramework(const NSString& path, int mode,
                                  const NSArray& directories = nullptr, NSError* error = nullptr);

/// Ends one loading. False and an error on failure. A handle that is not open is a programming error.
bool ZEBUnloadFramework(ZEBLibraryHandle handle, NSError* error = nullptr);

/// The folder of the frameworks that come with this library, such as UIKit, for `ZEBLoadFramework`: the first
/// of these that is there, else nil.
///   - what the host has set
///   - `zebutilities/Frameworks` beside the image that holds this library
///   - the main bundle's own frameworks, where it has a UIKit.framework
///   - `../lib/zebutilities/Frameworks` beside that image, for programs that hold the library themselves
///   - where the library was to be installed when it was built; with raised privileges the only one
/// Asked anew at each call. Any thread.
NSString ZEBFrameworksDirectory();

/// The host's choice, for other layouts; nil takes it back. To be set before the first `ZEBTimer` is made that
/// pauses in the background, which loads UIKit.
void ZEBSetFrameworksDirectory(const NSString& directory);

}  // namespace zeb
