#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

/// The family of devices that a model belongs to.
enum ZEBPlatform : std::int64_t {
  ZEBPlatformUnknown = 0,
  ZEBPlatformPhone = 1,
  ZEBPlatformPod = 2,
  ZEBPlatformPad = 3,
};

// The functions without an argument describe the machine that the process runs on. Each determines
// its result at the first call and keeps it, unless the model cannot be read at that time, for
// example because no file descriptor is left. All functions may be called from any thread.

/// The machine's model: the system control (6, 1), see Linux/SystemControl.h. Nil if it cannot be
/// read.
NSString ZEBPlatformString();

/// The family of the machine's model. If that is unknown, the first call logs a warning on the
/// channel "ZEBUtilities".
ZEBPlatform ZEBCurrentPlatform();
/// The family of any model, by its first letters: "iPhone", "iPad" or "iPod".
ZEBPlatform ZEBPlatformFromPlatformString(const NSString& model);

/// The version of the machine's model.
std::uint32_t ZEBPlatformVersion();
/// The generation of any model in the bits 24 to 31 and its variant in the bits 16 to 23, so that
/// later models have larger numbers: "iPhone10,3" has 0x0A030000. The generation is the first
/// number of the text and the variant follows the first comma after it. Each is limited to 0…255,
/// and is 0 if it is missing. Deliberately, other texts are read in the same way: "x86_64" has
/// 0x56000000.
std::uint32_t ZEBPlatformVersionFromString(const NSString& model);

/// The year in which the hardware of the machine's model came out; 2007 for an unknown family.
std::int64_t ZEBPlatformYearClass();

}  // namespace zeb
