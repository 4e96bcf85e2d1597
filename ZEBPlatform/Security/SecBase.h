#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

/// The result of a call of the security services: `errSecSuccess`, or why the call failed.
using OSStatus = std::int32_t;

enum : OSStatus {
  errSecSuccess = 0,
  /// The request is not one that this platform serves.
  errSecUnimplemented = -4,
  /// The disk is full.
  errSecDiskFull = -34,
  /// Reading or writing failed for a reason that no other status names.
  errSecIO = -36,
  /// An argument is nil, of the wrong kind, or contradicts another one.
  errSecParam = -50,
  /// The place of the items may be read but not written.
  errSecWrPerm = -61,
  errSecAllocate = -108,
  /// The place of the items cannot be reached: no folder, no service, no permission; its files may
  /// be changed by others; or another process uses it for too long.
  errSecNotAvailable = -25291,
  /// The master key is not the one that the items were sealed with.
  errSecAuthFailed = -25293,
  /// The place exists but contains something else, or is damaged.
  errSecInvalidKeychain = -25295,
  errSecDuplicateItem = -25299,
  errSecItemNotFound = -25300,
  /// The store is locked and cannot ask the user to unlock it.
  errSecInteractionNotAllowed = -25308,
  /// A stored value was changed or damaged outside, or is not what its attributes say.
  errSecDecode = -26275,
};

/// A sentence for logs that says what the status means and what to do; nil for `errSecSuccess`.
NSString SecCopyErrorMessageString(OSStatus status);

}  // namespace zeb
