#pragma once

#include <cstddef>
#include <ctime>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace zeb::bench {

inline constexpr std::size_t maxGrowthElements = 1'000'000;

/// The plots of the picture. Each shows the lines of one kind of work.
enum class GrowthPlot { documents, collections, registration, notification, scheduling, posts };
inline constexpr std::size_t growthPlots = 6;

/// How the cost of one kind of work grows with its number of elements.
struct GrowthCurve {
  struct Point {
    std::size_t elements;
    double seconds;  ///< of all elements together
    double nanosecondsEach() const { return seconds * 1e9 / static_cast<double>(elements); }
  };

  GrowthPlot plot;
  std::string name;
  std::vector<Point> points;  ///< the smallest size first

  /// The exponent e of the law seconds = c · elementsᵉ that fits the larger sizes best. The
  /// smallest sizes are left out, because the fixed cost of a call hides the growth there.
  double exponent() const;
  /// The same of the two last decades, where growth shows that begins late.
  double finalExponent() const;
  /// Whether the cost grows faster than n log n.
  bool isFault() const;
  /// "ok", "FAULT", or "reference" for the line that measures no part of the library.
  const char* verdict() const;
};

/// A constant of this type registers a line of `zeb_bench --growth`, which is measured at 1, 10,
/// 100 … `maxGrowthElements` elements. `prepare` makes the input for a number of elements, and
/// `work` is measured with it. What `work` leaves in the input is destroyed after the measurement.
struct GrowthCase {
  /// Answers the processor seconds of the work with `copies` inputs, each of `elements` elements.
  using Measure = std::function<double(std::size_t elements, std::size_t copies)>;

  GrowthCase(GrowthPlot plot, std::string name, Measure measure);

  template <class Prepare, class Work>
  GrowthCase(GrowthPlot plot, std::string name, Prepare prepare, Work work)
      : GrowthCase(plot, std::move(name),
                   [prepare, work](std::size_t elements, std::size_t copies) {
                     std::vector<decltype(prepare(elements))> inputs;
                     inputs.reserve(copies);
                     while (inputs.size() < copies) inputs.push_back(prepare(elements));
                     const std::clock_t start = std::clock();
                     for (auto& input : inputs) work(input);
                     return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
                   }) {}
};

/// The `prepare` of work that needs only the number.
inline std::size_t sameNumber(std::size_t elements) { return elements; }

/// The `prepare` of an input that is constructed from the number.
template <class Input>
Input makeInput(std::size_t elements) {
  return Input(elements);
}

/// An order for removals: the first element, the last, the second, the last but one, and so on. A
/// linear search from either end shows in the result, but random accesses to memory do not.
template <class T>
std::vector<T> fromBothEnds(const std::vector<T>& all) {
  std::vector<T> result;
  result.reserve(all.size());
  for (std::size_t first = 0, last = all.size(); first < last; ++first) {
    result.push_back(all[first]);
    if (first < --last) result.push_back(all[last]);
  }
  return result;
}

/// The names of all lines.
std::vector<std::string> growthNames();

/// Measures all lines, or those whose names begin with one of `names`, and prints each one at once.
std::vector<GrowthCurve> measureGrowth(const std::vector<std::string>& names);

}  // namespace zeb::bench
