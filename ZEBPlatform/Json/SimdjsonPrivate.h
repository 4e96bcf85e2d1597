#pragma once

// The one place that reaches below simdjson's public interface: its first stage, which finds a
// text's structure, and its conversion of decimal numbers. With a version whose insides are not known,
// both report that they can't, and their callers go by plain code.

#include <ZEBPlatform/Linux/detail/MemoryPages.h>

#include <simdjson.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace zeb::detail::simdjson_access {

inline constexpr bool isKnownVersion =
    simdjson::SIMDJSON_VERSION_MAJOR == 3 && simdjson::SIMDJSON_VERSION_MINOR == 0;

/// The double nearest to ±mantissa × 10^exponent. False when that can't be told quickly.
[[gnu::always_inline]] inline bool nearestDouble(std::int64_t exponent, std::uint64_t mantissa,
                                                 bool negative, double& result) noexcept {
  constexpr std::int64_t lowest = -342;
  constexpr std::int64_t highest = 308;
  if (!isKnownVersion || exponent < lowest || exponent > highest) return false;
  return simdjson::builtin::numberparsing::compute_float_64(exponent, mantissa, negative, result);
}

/// An object of this kind when the processor can run its code, else null.
template <class Implementation>
const simdjson::implementation* makeIfSupported() {
  const auto* implementation = new Implementation;
  if (implementation->supported_by_runtime_system()) return implementation;
  delete implementation;
  return nullptr;
}

/// The fastest kind of implementation that the processor can run; null when there is none. The object is
/// our own and never destroyed: simdjson's own objects are destroyed while the process exits, and at that
/// time destructors of static objects and other threads may still parse.
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

/// The first stage. Keeps its index memory from text to text.
class FirstStage {
 public:
  /// Whether `indexes()` describes the text, which is well-formed as far as this stage checks.
  bool run(const char* text, std::size_t length) {
    if (!isKnownVersion || !reserve(length)) return false;
    const bool isSound = parser_->stage1(reinterpret_cast<const std::uint8_t*>(text), length,
                                         simdjson::stage1_mode::regular) == simdjson::SUCCESS;
    // A text at fault leaves no count behind, but never writes more than one place a byte.
    usedCount_ = std::max(usedCount_, isSound ? count() : length);
    return isSound;
  }

  const std::uint32_t* indexes() const noexcept { return parser_->structural_indexes.get(); }
  std::size_t count() const noexcept { return parser_->n_structural_indexes; }

  std::size_t reservedBytes() const noexcept {
    return parser_ ? parser_->capacity() * sizeof(std::uint32_t) : 0;
  }
  /// Bytes that have been written, and so take memory.
  std::size_t usedBytes() const noexcept { return usedCount_ * sizeof(std::uint32_t); }
  /// Gives the system the memory back that lies behind the first `bytes`.
  void discardBehind(std::size_t bytes) noexcept {
    if (usedBytes() <= bytes) return;
    discardPages(reinterpret_cast<char*>(parser_->structural_indexes.get()) + bytes,
                 reservedBytes() - bytes);
    usedCount_ = bytes / sizeof(std::uint32_t);
  }

 private:
  bool reserve(std::size_t length) {
    constexpr std::size_t smallestCapacity = 4096;
    constexpr std::size_t depth = 1;  // the first stage does not use it
    if (parser_ && parser_->capacity() >= length) return true;
    const std::size_t capacity = std::max(length, smallestCapacity);
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
