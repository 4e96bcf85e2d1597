#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <cstddef>
#include <cstdint>

namespace zeb {

/// A version in three numbers.
struct NSOperatingSystemVersion {
  std::int64_t majorVersion;
  std::int64_t minorVersion;
  std::int64_t patchVersion;
};

/// Facts about the running process and its machine. Each call asks the system again. All functions
/// may be called from any thread.
class NSProcessInfo final : public NSObject {
 public:
  /// The object for this process.
  static const Ref<NSProcessInfo>& processInfo();

  /// The last component of the path by which the program was called, unless the host has set a
  /// name.
  NSString processName() const;
  /// Changes the name in this object only, for logs. The system keeps its own name for the process.
  void setProcessName(const NSString& name);
  std::int32_t processIdentifier() const noexcept;
  /// The program's arguments; the first is its name.
  NSArray arguments() const;
  /// Names and values of the environment. Must not be called while another thread changes the
  /// environment.
  NSDictionary environment() const;
  NSString hostName() const;

  /// A text that no other call returns, on any machine.
  NSString globallyUniqueString() const;

  /// The machine's processors, and those of them that the process may use.
  std::size_t processorCount() const noexcept;
  std::size_t activeProcessorCount() const noexcept;
  /// In bytes.
  std::uint64_t physicalMemory() const noexcept;
  /// Seconds that the machine has been awake since it started.
  NSTimeInterval systemUptime() const noexcept;

  /// The kernel's version, because the features of a Linux system depend on it and not on the
  /// distribution.
  NSOperatingSystemVersion operatingSystemVersion() const;
  bool isOperatingSystemAtLeastVersion(const NSOperatingSystemVersion& version) const;
  /// The distribution and the kernel's release, to be shown to people. Not for comparisons.
  NSString operatingSystemVersionString() const;

 private:
  NSProcessInfo() = default;
};

}  // namespace zeb
