#pragma once

namespace zeb::detail {

/// Whether freed blocks of memory are kept for the next allocation of the same size. Not in builds
/// with a sanitizer, which follows a block from its allocation to its release only if the block is
/// not used again in between.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool reusesMemory = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
inline constexpr bool reusesMemory = false;
#else
inline constexpr bool reusesMemory = true;
#endif
#else
inline constexpr bool reusesMemory = true;
#endif

}  // namespace zeb::detail
