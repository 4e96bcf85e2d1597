#pragma once

// The only header that uses simdjson's internal functions: its first stage, which finds a text's
// tokens, and its conversion of decimal numbers. With a simdjson version whose internals are
// unknown, both report failure, and their callers use plain code.

#include <ZEBPlatform/Linux/detail/MemoryPages.h>

#include <simdjson.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace zeb::detail::simdjson_access {

inline constexpr bool isKnownVersion =
    simdjson::SIMDJSON_VERSION_MAJOR == 3 && simdjson::SIMDJSON_VERSION_MINOR == 0;

/// The double nearest to ±mantissa × 10^exponent. False when the fast conversion cannot decide.
[[gnu::always_inline]] inline bool nearestDouble(std::int64_t exponent, std::uint64_t mantissa,
                                                 bool negative, double& result) noexcept {
  constexpr std::int64_t minExponent = -342;
  constexpr std::int64_t maxExponent = 308;
  if (!isKnownVersion || exponent < minExponent || exponent > maxExponent) return false;
  return simdjson::builtin::numberparsing::compute_float_64(exponent, mantissa, negative, result);
}

/// An object of this implementation when the processor can run its code, else null.
template <class Implementation>
const simdjson::implementation* makeIfSupported() {
  const auto* implementation = new Implementation;
  if (implementation->supported_by_runtime_system()) return implementation;
  delete implementation;
  return nullptr;
}

/// The fastest implementation that the processor can run; null when there is none. The object is
/// our own and never destroyed: simdjson's own objects are destroyed while the process exits, when
/// destructors of static objects and other threads may still parse.
inline const simdjson::implementation* fastestImplementation() {
  static const simdjson::implementation* const fastest = [] {
    const simdjson::implementation* found = nullptr;
#ifdef SIMDJSON_ICELAKE_IMPLEMENTATION_H
    if (!found) found = makeIfSupported<simdjson::icelake::implementation>();
#endif
#ifdef SIMDJSON_HASWELL_IMPLEMENTATION_H
    if (!found) found = makeIfSupported<simdjson::haswell::implementation>();
#endif
#ifdef SIMDJSON_WESTMERE_IMPLEMENTATION_H
    if (!found) found = makeIfSupported<simdjson::westmere::implementation>();
#endif
#ifdef SIMDJSON_ARM64_IMPLEMENTATION_H
    if (!found) found = makeIfSupported<simdjson::arm64::implementation>();
#endif
#ifdef SIMDJSON_PPC64_IMPLEMENTATION_H
    if (!found) found = makeIfSupported<simdjson::ppc64::implementation>();
#endif
#ifdef SIMDJSON_FALLBACK_IMPLEMENTATION_H
    if (!found) found = makeIfSupported<simdjson::fallback::implementation>();
#endif
    return found;
  }();
  return fastest;
}

/// The first stage. Keeps its memory for the next text.
class FirstStage {
 public:
  /// Whether the text is well-formed as far as this stage checks; `indexes()` describes it then.
  bool run(const char* text, std::size_t length) {
    if (!isKnownVersion || !reserve(length)) return false;
    const bool isSound = parser_->stage1(reinterpret_cast<const std::uint8_t*>(text), length,
                                         simdjson::stage1_mode::regular) == simdjson::SUCCESS;
    // A faulty text leaves no count, but at most one index for each byte was written.
    usedCount_ = std::max(usedCount_, isSound ? count() : length);
    return isSound;
  }

  const std::uint32_t* indexes() const noexcept { return parser_->structural_indexes.get(); }
  std::size_t count() const noexcept { return parser_->n_structural_indexes; }

  std::size_t reservedBytes() const noexcept {
    return parser_ ? parser_->capacity() * sizeof(std::uint32_t) : 0;
  }
  /// Bytes that have been written and so occupy memory.
  std::size_t usedBytes() const noexcept { return usedCount_ * sizeof(std::uint32_t); }
  /// Returns the memory after the first `bytes` to the system.
  void discardAfter(std::size_t bytes) noexcept {
    if (usedBytes() <= bytes) return;
    discardPages(reinterpret_cast<char*>(parser_->structural_indexes.get()) + bytes,
                 reservedBytes() - bytes);
    usedCount_ = bytes / sizeof(std::uint32_t);
  }

 private:
  bool reserve(std::size_t length) {
    constexpr std::size_t minCapacity = 4096;
    constexpr std::size_t depth = 1;  // the first stage does not use it
    if (parser_ && parser_->capacity() >= length) return true;
    const std::size_t capacity = std::max(length, minCapacity);
    usedCount_ = 0;
    if (parser_) return parser_->set_capacity(capacity) == simdjson::SUCCESS;
    const simdjson::implementation* implementation = fastestImplementation();
    return implementation && implementation->create_dom_parser_implementation(
                                 capacity, depth, parser_) == simdjson::SUCCESS;
  }

  std::unique_ptr<simdjson::internal::dom_parser_implementation> parser_;
  std::size_t usedCount_ = 0;
};

}  // namespace zeb::detail::simdjson_access
