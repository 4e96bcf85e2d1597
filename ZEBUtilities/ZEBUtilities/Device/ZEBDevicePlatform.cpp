#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Logging/OLGLogging.h>
#include <ZEBUtilities/Constants/ZEBUtilitiesConstants.h>
#include <ZEBUtilities/Device/ZEBDevicePlatform.h>
#include <ZEBUtilities/Device/ZEBSystemControl.h>
#include <ZEBUtilities/Device/detail/PlatformYearClass.h>

#include <algorithm>
#include <atomic>
#include <memory>

namespace zeb {

namespace {

/// The machine that the process runs on.
struct Machine {
  explicit Machine(const NSString& name)
      : model(name),
        platform(ZEBPlatformFromPlatformString(model)),
        version(ZEBPlatformVersionFromString(model)),
        year(detail::platformYearClass(platform, version)) {}

  NSString model;
  ZEBPlatform platform;
  std::uint32_t version;
  std::int64_t year;
};

/// Found once. If the model cannot be read, for example because no file descriptor is left, the
/// answer is a machine without a model, and the next call tries again.
const Machine& machine() {
  static constinit std::atomic<const Machine*> found{nullptr};
  const Machine* known = found.load(std::memory_order_acquire);
  if (known) return *known;
  const NSString model = ZEBSystemControlRetrieveStringByControlType(6, 1);
  if (model.isNil()) {
    static const detail::NeverDestroyed<Machine> unknown(nullptr);
    return *unknown;
  }
  auto own = std::make_unique<const Machine>(model);
  return found.compare_exchange_strong(known, own.get()) ? *own.release() : *known;
}

void warnOnceAboutUnknownPlatform() {
  static constinit std::atomic<bool> isDone{false};
  if (isDone.load(std::memory_order_relaxed) || isDone.exchange(true)) return;
  const char* const channel = ZEBUtilitiesLoggingChannel_Generic;
  if (!OLGCanLog(nullptr, OLGLevelWarning, channel)) return;
  OLGLogEx(nullptr, OLGLevelWarning, channel, "ZEBUtilities/ZEBUtilities/ZEBPlatform",
           "ZEBPlatform ZEBCurrentPlatform()_block_invoke", 47, "Unknown platform found: %@",
           ZEBPlatformString());
}

std::uint32_t byteOf(const NSString& number) {
  return static_cast<std::uint32_t>(std::clamp<std::int64_t>(number.integerValue(), 0, 255));
}

}  // namespace

NSString ZEBPlatformString() { return machine().model; }

ZEBPlatform ZEBCurrentPlatform() {
  const Machine& current = machine();
  if (current.platform == ZEBPlatformUnknown && !current.model.isNil()) {
    warnOnceAboutUnknownPlatform();
  }
  return current.platform;
}

ZEBPlatform ZEBPlatformFromPlatformString(const NSString& model) {
  if (model.hasPrefix("iPhone")) return ZEBPlatformPhone;
  if (model.hasPrefix("iPad")) return ZEBPlatformPad;
  if (model.hasPrefix("iPod")) return ZEBPlatformPod;
  return ZEBPlatformUnknown;
}

std::uint32_t ZEBPlatformVersion() { return machine().version; }

std::uint32_t ZEBPlatformVersionFromString(const NSString& model) {
  std::size_t digit = 0;
  while (digit < model.length() &&
         (model.characterAtIndex(digit) < u'0' || model.characterAtIndex(digit) > u'9')) {
    ++digit;
  }
  if (digit == model.length()) return 0;
  const NSArray numbers = model.substringFromIndex(digit).componentsSeparatedByString(",");
  const std::uint32_t variant = numbers.count() > 1 ? byteOf(NSString(numbers[1])) : 0;
  return byteOf(NSString(numbers[0])) << 24 | variant << 16;
}

std::int64_t ZEBPlatformYearClass() {
  ZEBCurrentPlatform();  // logs an unknown platform
  return machine().year;
}

std::int64_t detail::platformYearClass(ZEBPlatform platform, std::uint32_t version) noexcept {
  const std::int64_t generation = version >> 24;
  const std::int64_t variant = version >> 16 & 0xFF;
  switch (platform) {
    case ZEBPlatformPad:
      return 2009 + generation;
    case ZEBPlatformPod:
      // Deliberate: no model came out in the year that is left out.
      return 2006 + generation + (generation >= 7 ? 1 : 0);
    case ZEBPlatformPhone:
      return generation == 1 && variant == 1 ? 2007 : 2007 + generation;
    case ZEBPlatformUnknown:
      break;
  }
  return 2007;
}

}  // namespace zeb
