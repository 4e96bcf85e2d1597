#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Runtime/Class.h>

namespace zeb {

/// The load addresses of the images in a stack, so that the stack can be symbolised later, also on
/// another machine: the address of a line minus the image's load address is the place in the
/// image's file, which tools such as `addr2line` take.
///
/// The stack's lines are those of `NSThread::callStackSymbols` and
/// `ZEBStackTraceSampler::callstackSymbols`. Unlike the system's own text, which joins image and
/// function ("path(function+0x2e) [0x7f10a53c1d2e]"), their second piece between white space is the
/// image's file name, by which `loadAddressMapForStack` finds it. Deliberately, an image whose file
/// name contains white space is not found.
///
/// All functions may be called from any thread.
class ZEBSymbolication {
 public:
  ZEBSymbolication() = delete;

  /// Registered as "ZEBSymbolication", with both functions. The class gets this name at the first
  /// call of this function, not by itself.
  static Class* runtimeClass();

  /// The file name of each loaded image (the part of its path after the last "/") and the address
  /// of its first byte, written like "0x7f10a5300000". If two images have the same file name, the
  /// one that was loaded last counts.
  static NSDictionary _loadAddressMap();

  /// The same for the images that the stack's lines name. Values that are no texts are skipped.
  static NSDictionary loadAddressMapForStack(const NSArray& stack);
};

}  // namespace zeb
