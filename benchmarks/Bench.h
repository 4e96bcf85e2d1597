#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <type_traits>
#include <vector>

namespace zeb::bench {

/// The unit of a value, and whether larger values are better.
struct Metric {
  const char* name;
  bool moreIsBetter;
};
inline constexpr Metric megabytesPerSecond{"MB/s", true};
inline constexpr Metric nanoseconds{"ns", false};
inline constexpr Metric bytes{"bytes", false};

/// This library and another one (the peer) doing the same work, on one input or several.
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
  /// Above 1 if we are better. It equals the geometric mean of the inputs' ratios.
  double ratio() const;
};

/// Collects the results and prints each one at once.
class Report {
 public:
  explicit Report(bool verbose) : verbose_(verbose) {}

  /// Names the case of the following results.
  void startCase(const std::string& name) { caseName_ = name; }
  void add(Comparison comparison);
  /// Prints to standard error that a peer is not installed.
  void skip(const std::string& peer);

  const std::vector<Comparison>& comparisons() const { return comparisons_; }

 private:
  bool verbose_;
  std::string caseName_;
  std::vector<Comparison> comparisons_;
};

/// A constant of this type in a case's file registers the case. The case throws std::exception if
/// the two sides did not do the same work.
struct Case {
  Case(std::string name, std::function<void(Report&)> run);
};

/// Seconds of all these calls together.
double secondsOf(const std::function<void()>& work, std::size_t calls = 1);

struct Seconds {
  double ours;
  double peer;
};

/// Seconds of one call of each. After a warm-up the two take turns of some milliseconds; the median
/// turn of each counts.
Seconds measureInTurns(const std::function<void()>& ours, const std::function<void()>& peer);

/// The nanoseconds of one step, if each call does `count` steps.
Comparison nanosecondsEach(std::string ours, std::string peer, Seconds seconds, std::size_t count);

double median(std::vector<double> values);

/// Whether no names are given, or the name begins with one of them.
bool isWanted(const std::string& name, const std::vector<std::string>& names);

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
