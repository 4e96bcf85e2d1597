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

/// Facts about the running process and its machine, asked of the system at each call unless it says
/// otherwise. Any thread.
class NSProcessInfo final : public NSObject {
 public:
  /// The one of this process.
  static const Ref<NSProcessInfo>& processInfo();

  /// The last part of the path that the program was called by; or whatever the host named it.
  NSString processName() const;
  /// For logs only: the system goes on calling the process what it did.
  void setProcessName(const NSString& name);
  std::int32_t processIdentifier() const noexcept;
  /// What the program was called with, its name first.
  NSArray arguments() const;
  /// Names and values of the environment. Must not run while another thread changes it.
  NSDictionary environment() const;
  NSString hostName() const;

  /// A text that no other call answers, on this machine or another.
  NSString globallyUniqueString() const;

  /// Processors that the machine has, and those of them that the process may use.
  std::size_t processorCount() const noexcept;
  std::size_t activeProcessorCount() const noexcept;
  /// In bytes.
  std::uint64_t physicalMemory() const noexcept;
  /// Seconds that the machine has been awake since it started.
  NSTimeInterval systemUptime() const noexcept;

  /// Of the kernel: what a Linux system can do depends on it, whoever distributes the rest.
  NSOperatingSystemVersion operatingSystemVersion() const;
  bool isOperatingSystemAtLeastVersion(const NSOperatingSystemVersion& version) const;
  /// For people: the distribution and the kernel's release. Not for comparisons.
  NSString operatingSystemVersionString() const;

 private:
  NSProcessInfo() = default;
};

}  // namespace zeb
