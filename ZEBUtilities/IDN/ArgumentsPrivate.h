#pragma once

#include <IDN/XcodeTypes.h>

namespace zeb::detail {

/// Whether the source is missing. An empty one needs no pointer.
template <class Source>
bool isMissing(const Source* source, std::int32_t count) noexcept {
  return count < 0 || (count > 0 && source == nullptr);
}

/// Whether an argument of a conversion is missing.
template <class Source, class Destination>
bool isMissing(const Source* source, std::int32_t count, const Destination* destination,
               const std::int32_t* length) noexcept {
  return isMissing(source, count) || destination == nullptr || length == nullptr || *length < 0;
}

/// The checks of arguments that the functions of labels and domains have.
inline XcodeResult checkSizes(const void* source, std::int32_t count, std::int32_t maxCount,
                              const void* destination, const std::int32_t* length,
                              std::int32_t minCapacity) noexcept {
  if (source == nullptr || destination == nullptr || length == nullptr) return XcodeBadArgument;
  if (count < 1 || *length < 1) return XcodeBadArgument;
  return count > maxCount || *length < minCapacity ? XcodeOverflow : XcodeOK;
}

}  // namespace zeb::detail
