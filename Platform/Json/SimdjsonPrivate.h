#pragma once

// The one place that reaches below simdjson's public interface: its first stage, which finds a
// text's structure, and its conversion of decimal numbers. With a version whose insides are not known,
// both report that they can't, and their callers go by plain code.

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

/// The first stage. Keeps its index memory from text to text.
class FirstStage {
 public:
  /// Whether `indexes()` describes the text, which is well-formed as far as this stage checks.
  bool run(const char* text, std::size_t length) {
    if (!isKnownVersion) return false;
    constexpr std::size_t smallestCapacity = 4096;
    if (!parser_ || parser_->capacity() < length) {
      parser_ = std::make_unique<simdjson::dom::parser>();
      if (parser_->allocate(std::max(length, smallestCapacity), 1)) return false;
    }
    return parser_->implementation->stage1(reinterpret_cast<const std::uint8_t*>(text), length,
                                           simdjson::stage1_mode::regular) == simdjson::SUCCESS;
  }

  const std::uint32_t* indexes() const noexcept {
    return parser_->implementation->structural_indexes.get();
  }
  std::size_t count() const noexcept { return parser_->implementation->n_structural_indexes; }
  std::size_t footprint() const noexcept {
    return parser_ ? parser_->capacity() * sizeof(std::uint32_t) : 0;
  }

 private:
  std::unique_ptr<simdjson::dom::parser> parser_;
};

}  // namespace zeb::detail::simdjson_access
