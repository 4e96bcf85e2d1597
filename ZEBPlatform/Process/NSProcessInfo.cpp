#include <ZEBPlatform/Concurrency/detail/Lock.h>
#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Linux/Clock.h>
#include <ZEBPlatform/Linux/detail/ProcessFacts.h>
#include <ZEBPlatform/Linux/detail/Random.h>
#include <ZEBPlatform/Process/NSProcessInfo.h>

#include <array>
#include <charconv>
#include <string>
#include <tuple>

namespace zeb {

namespace {

/// The name that the host gave to the process; nil at first.
struct GivenName {
  detail::Lock lock;
  NSString name ZEB_GUARDED_BY(lock);
};

GivenName& givenName() {
  static detail::NeverDestroyed<GivenName> slot;
  return *slot;
}

}  // namespace

const Ref<NSProcessInfo>& NSProcessInfo::processInfo() {
  static const detail::NeverDestroyed<Ref<NSProcessInfo>> shared(
      Ref<NSProcessInfo>::adopt(new NSProcessInfo));
  return *shared;
}

NSString NSProcessInfo::processName() const {
  {
    GivenName& given = givenName();
    const detail::LockGuard guard(given.lock);
    if (!given.name.isNil()) return given.name;
  }
  const auto arguments = processArguments();
  const std::string path = arguments.empty() ? executablePath() : arguments.front();
  return path.substr(path.rfind('/') + 1);
}

void NSProcessInfo::setProcessName(const NSString& name) {
  const NSString copy = name.copy();
  GivenName& given = givenName();
  const detail::LockGuard guard(given.lock);
  given.name = copy;
}

std::int32_t NSProcessInfo::processIdentifier() const noexcept { return zeb::processIdentifier(); }

NSArray NSProcessInfo::arguments() const {
  NSMutableArray arguments;
  for (const std::string& argument : processArguments()) arguments.addObject(argument);
  return arguments.copy();
}

NSDictionary NSProcessInfo::environment() const {
  NSMutableDictionary variables;
  for (const auto& [name, value] : processEnvironment()) variables.setObject(value, name);
  return variables.copy();
}

NSString NSProcessInfo::hostName() const { return machineName(); }

NSString NSProcessInfo::globallyUniqueString() const {
  std::array<std::uint32_t, 4> random;
  fillWithRandomBytes(std::as_writable_bytes(std::span(random)));
  return NSString::stringWithFormat(
      "%08X-%04X-%04X-%04X-%04X%08X-%d-%016llX", random[0], random[1] >> 16, random[1] & 0xFFFF,
      random[2] >> 16, random[2] & 0xFFFF, random[3], processIdentifier(), mach_absolute_time());
}

std::size_t NSProcessInfo::processorCount() const noexcept { return configuredProcessorCount(); }
std::size_t NSProcessInfo::activeProcessorCount() const noexcept { return usableProcessorCount(); }
std::uint64_t NSProcessInfo::physicalMemory() const noexcept { return physicalMemorySize(); }

NSTimeInterval NSProcessInfo::systemUptime() const noexcept {
  mach_timebase_info_data_t tick{1, 1};
  mach_timebase_info(&tick);
  return static_cast<double>(mach_absolute_time()) * tick.numer / tick.denom / 1e9;
}

NSOperatingSystemVersion NSProcessInfo::operatingSystemVersion() const {
  const std::string release = kernelRelease();
  std::array<std::int64_t, 3> parts{};
  const char* place = release.data();
  const char* const end = place + release.size();
  for (std::int64_t& part : parts) {
    place = std::from_chars(place, end, part).ptr;
    if (place == end || *place != '.') break;
    ++place;
  }
  return {parts[0], parts[1], parts[2]};
}

bool NSProcessInfo::isOperatingSystemAtLeastVersion(const NSOperatingSystemVersion& version) const {
  const NSOperatingSystemVersion own = operatingSystemVersion();
  return std::tie(own.majorVersion, own.minorVersion, own.patchVersion) >=
         std::tie(version.majorVersion, version.minorVersion, version.patchVersion);
}

NSString NSProcessInfo::operatingSystemVersionString() const {
  return NSString::stringWithFormat("%s (kernel %s)", operatingSystemName(), kernelRelease());
}

}  // namespace zeb
