#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

namespace zeb::bench {

/// What a value counts, and whether more of it is better.
struct Metric {
  const char* name;
  bool moreIsBetter;
};
inline constexpr Metric megabytesPerSecond{"MB/s", true};
inline constexpr Metric nanoseconds{"ns", false};
inline constexpr Metric bytes{"bytes", false};

/// Us and a peer at the same work, on one input or several.
struct Comparison {
  struct Sample {
    std::string input;
    double ours;
    double peer;
  };

  Metric metric;
  std::string ours;
  std::string peer;
  std::vector<Sample> samples;
  std::string caseName = {};  ///< set by the report

  /// Geometric means over the inputs.
  double ourValue() const;
  double peerValue() const;
  /// Above 1 when we are better. The same as the geometric mean of the inputs' ratios.
  double ratio() const;
};

/// Collects the results and prints each as soon as it is there.
class Report {
 public:
  explicit Report(bool verbose) : verbose_(verbose) {}

  /// Whose results come next.
  void startCase(const std::string& name) { caseName_ = name; }
  void add(Comparison comparison);
  /// Says on standard error that a peer is not installed.
  void skip(const std::string& peer);

  const std::vector<Comparison>& comparisons() const { return comparisons_; }

 private:
  bool verbose_;
  std::string caseName_;
  std::vector<Comparison> comparisons_;
};

/// A case makes itself known by a constant of this type in its file. It throws std::exception when
/// what it would compare is not the same work.
struct Case {
  Case(std::string name, std::function<void(Report&)> run);
};

struct Seconds {
  double ours;
  double peer;
};

/// Seconds of one call of each: after a warm-up they take turns, each as often as fills some
/// milliseconds, and the median turn of each counts.
Seconds measureInTurns(const std::function<void()>& ours, const std::function<void()>& peer);

/// The nanoseconds of one of the `count` things that a call does.
Comparison nanosecondsEach(std::string ours, std::string peer, Seconds seconds, std::size_t count);

double median(std::vector<double> values);

/// Throws std::runtime_error unless the condition holds.
void require(bool condition, const std::string& complaint);

/// Makes the optimiser believe that the value is used and that all memory may have changed.
template <class T>
inline void consume(const T& value) {
  if constexpr (std::is_scalar_v<T>) {
    asm volatile("" : : "r"(value) : "memory");
  } else {
    asm volatile("" : : "r"(&value) : "memory");
  }
}

}  // namespace zeb::bench
