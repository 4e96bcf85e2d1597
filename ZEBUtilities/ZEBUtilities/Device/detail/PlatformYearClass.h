#pragma once

#include <ZEBUtilities/Device/ZEBDevicePlatform.h>

#include <cstdint>

namespace zeb::detail {

/// The year class of any platform and version (`ZEBPlatformVersionFromString`).
std::int64_t platformYearClass(ZEBPlatform platform, std::uint32_t version) noexcept;

}  // namespace zeb::detail
