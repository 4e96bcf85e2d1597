#include "Growth.h"

#include <malloc.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>

#include "Bench.h"

namespace zeb::bench {

namespace {

/// Small inputs are measured in several copies, which together have this many elements.
constexpr std::size_t minElementsOfRound = 10'000;

// Rounds are added until the work of all of them has taken some time, or until their preparation
// has taken a longer time.
constexpr int minRounds = 3;
constexpr double maxSecondsOfWork = 0.05;
constexpr double maxSecondsOfRounds = 0.15;

constexpr std::size_t minFittedElements = 100;

// n log n has an exponent of 1.12 from a hundred to a million elements, and n √n one of 1.5. Caches
// add to the exponent, because the last sizes do not fit into them: 1.5 and 1.8 is what the line
// `memory` has, whose every step is an access to another place. The lines of the library, which do
// more than one access for each element, have at most 1.2 and 1.4 on a busy machine.
constexpr double maxExponent = 1.3;
constexpr double maxFinalExponent = 1.5;

/// It uses no part of the library, so it is not judged.
constexpr const char* reference = "memory";

struct Line {
  GrowthPlot plot;
  GrowthCase::Measure measure;
};

std::map<std::string, Line>& lines() {
  static std::map<std::string, Line> all;
  return all;
}

/// Seconds of the shortest round, because a disturbance only ever adds time.
double secondsOfShortestRound(const GrowthCase::Measure& measure, std::size_t elements) {
  const std::size_t copies = std::max<std::size_t>(1, minElementsOfRound / elements);
  double shortest = std::numeric_limits<double>::infinity();
  double work = 0, rounds = 0;
  for (int round = 0; round < minRounds || (work < maxSecondsOfWork && rounds < maxSecondsOfRounds);
       ++round) {
    double seconds = 0;
    rounds += secondsOf([&] { seconds = measure(elements, copies); });
    work += seconds;
    shortest = std::min(shortest, seconds / static_cast<double>(copies));
  }
  return shortest;
}

/// The slope of the regression line on logarithmic axes.
double slopeFrom(std::size_t minElements, const std::vector<GrowthCurve::Point>& points) {
  double count = 0, sumX = 0, sumY = 0, sumXX = 0, sumXY = 0;
  for (const auto& [elements, seconds] : points) {
    if (elements < minElements) continue;
    const double x = std::log(static_cast<double>(elements)), y = std::log(seconds);
    count += 1;
    sumX += x;
    sumY += y;
    sumXX += x * x;
    sumXY += x * y;
  }
  return (count * sumXY - sumX * sumY) / (count * sumXX - sumX * sumX);
}

GrowthCurve measured(const std::string& name, const Line& line) {
  GrowthCurve curve{line.plot, name, {}};
  std::printf("%s", name.c_str());
  for (std::size_t elements = 1; elements <= maxGrowthElements; elements *= 10) {
    curve.points.push_back({elements, secondsOfShortestRound(line.measure, elements)});
    std::printf("\t%.4g", curve.points.back().nanosecondsEach());
    std::fflush(stdout);
  }
  std::printf("\t%.2f\t%.2f\t%s\n", curve.exponent(), curve.finalExponent(), curve.verdict());
  std::fflush(stdout);
  return curve;
}

}  // namespace

double GrowthCurve::exponent() const { return slopeFrom(minFittedElements, points); }

double GrowthCurve::finalExponent() const { return slopeFrom(maxGrowthElements / 100, points); }

bool GrowthCurve::isFault() const {
  return name != reference && (exponent() > maxExponent || finalExponent() > maxFinalExponent);
}

const char* GrowthCurve::verdict() const {
  if (name == reference) return "reference";
  return isFault() ? "FAULT" : "ok";
}

GrowthCase::GrowthCase(GrowthPlot plot, std::string name, Measure measure) {
  lines().emplace(std::move(name), Line{plot, std::move(measure)});
}

std::vector<std::string> growthNames() {
  std::vector<std::string> names;
  for (const auto& [name, line] : lines()) names.push_back(name);
  return names;
}

std::vector<GrowthCurve> measureGrowth(const std::vector<std::string>& names) {
  // The allocator keeps all memory. Else only the largest inputs would be given new pages by the
  // kernel in every round, and the kernel's work would look like growth.
  mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
  mallopt(M_MMAP_THRESHOLD, 1 << 30);
  std::printf("line");
  for (std::size_t elements = 1; elements <= maxGrowthElements; elements *= 10) {
    std::printf("\tns each of %zu", elements);
  }
  std::puts("\texponent\tat the end\tverdict");
  std::vector<GrowthCurve> curves;
  for (const auto& [name, line] : lines()) {
    if (isWanted(name, names)) curves.push_back(measured(name, line));
  }
  return curves;
}

}  // namespace zeb::bench
