#include "Bench.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <map>
#include <stdexcept>
#include <string_view>

#include "Growth.h"
#include "GrowthPicture.h"
#include "Picture.h"

namespace zeb::bench {

namespace {

constexpr double secondsOfTurn = 0.003;
constexpr int turns = 15;

std::map<std::string, std::function<void(Report&)>>& cases() {
  static std::map<std::string, std::function<void(Report&)>> all;
  return all;
}

/// The number of calls that fills a turn. Finding it is the warm-up.
std::size_t callsOfTurn(const std::function<void()>& work) {
  work();
  std::size_t calls = 1;
  while (secondsOf(work, calls) < secondsOfTurn) calls *= 2;
  return calls;
}

double geometricMean(const Comparison& comparison, double Comparison::Sample::* member) {
  double logarithms = 0;
  for (const auto& sample : comparison.samples) logarithms += std::log(sample.*member);
  return std::exp(logarithms / static_cast<double>(comparison.samples.size()));
}

void printLine(std::FILE* stream, const Comparison& comparison) {
  const double values[] = {comparison.ourValue(), comparison.peerValue()};
  std::fprintf(stream, "%s\t%s\t%s\t%s", comparison.caseName.c_str(), comparison.metric.name,
               comparison.ours.c_str(), comparison.peer.c_str());
  for (const double value : values) std::fprintf(stream, value < 1000 ? "\t%.4g" : "\t%.0f", value);
  std::fprintf(stream, "\t%.3g\n", comparison.ratio());
  std::fflush(stream);
}

}  // namespace

double Comparison::ourValue() const { return geometricMean(*this, &Sample::ours); }
double Comparison::peerValue() const { return geometricMean(*this, &Sample::peer); }
double Comparison::ratio() const {
  return metric.moreIsBetter ? ourValue() / peerValue() : peerValue() / ourValue();
}

void Report::add(Comparison comparison) {
  if (verbose_ && comparison.samples.size() > 1) {
    for (const auto& sample : comparison.samples) {
      printLine(stderr, {comparison.metric,
                         comparison.ours,
                         comparison.peer,
                         {sample},
                         caseName_ + " " + sample.input});
    }
  }
  comparison.caseName = caseName_;
  printLine(stdout, comparison);
  comparisons_.push_back(std::move(comparison));
}

void Report::skip(const std::string& peer) {
  std::fprintf(stderr, "zeb_bench: %s is skipped, because %s is not installed\n", caseName_.c_str(),
               peer.c_str());
}

Case::Case(std::string name, std::function<void(Report&)> run) {
  cases().emplace(std::move(name), std::move(run));
}

double secondsOf(const std::function<void()>& work, std::size_t calls) {
  const auto start = std::chrono::steady_clock::now();
  for (std::size_t call = 0; call < calls; ++call) work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

Seconds measureInTurns(const std::function<void()>& ours, const std::function<void()>& peer) {
  const std::size_t ourCalls = callsOfTurn(ours);
  const std::size_t peerCalls = callsOfTurn(peer);
  std::vector<double> ourSeconds, peerSeconds;
  for (int turn = 0; turn < turns; ++turn) {
    ourSeconds.push_back(secondsOf(ours, ourCalls) / static_cast<double>(ourCalls));
    peerSeconds.push_back(secondsOf(peer, peerCalls) / static_cast<double>(peerCalls));
  }
  return {median(std::move(ourSeconds)), median(std::move(peerSeconds))};
}

Comparison nanosecondsEach(std::string ours, std::string peer, Seconds seconds, std::size_t count) {
  const double scale = 1e9 / static_cast<double>(count);
  return {nanoseconds,
          std::move(ours),
          std::move(peer),
          {{{}, seconds.ours * scale, seconds.peer * scale}}};
}

double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

bool isWanted(const std::string& name, const std::vector<std::string>& names) {
  const auto begins = [&](const std::string& start) { return name.starts_with(start); };
  return names.empty() || std::ranges::any_of(names, begins);
}

void require(bool condition, const std::string& complaint) {
  if (!condition) throw std::runtime_error(complaint);
}

}  // namespace zeb::bench

namespace {

using namespace zeb::bench;

constexpr const char* usage =
    "usage: zeb_bench [--verbose] [--svg FILE] [NAME…]\n"
    "       zeb_bench --growth [--svg FILE] [NAME…]\n"
    "Measures this library against others (peers) in all cases, or in those whose names begin\n"
    "with a NAME.\n"
    "  --verbose   also prints the result of every input, to standard error\n"
    "  --growth    measures how the time of an element changes from 1 to 1,000,000 elements, and\n"
    "              fails if a cost grows faster than n log n\n"
    "  --svg FILE  also draws the results as a picture\n"
    "The environment variable ZEB_BENCH_DATA names the folder of the JSON documents; the default "
    "is\n"
    "../shared/data.\n";

int explain(std::FILE* stream, int status) {
  std::fputs(usage, stream);
  std::fputs("Cases:", stream);
  for (const auto& [name, run] : cases()) std::fprintf(stream, " %s", name.c_str());
  std::fputs("\nLines of --growth:", stream);
  for (const std::string& name : growthNames()) std::fprintf(stream, " %s", name.c_str());
  std::fputc('\n', stream);
  return status;
}

struct Options {
  bool verbose = false;
  bool growth = false;
  std::string picture;
  std::vector<std::string> names;
};

/// Whether every given name is the beginning of a name that exists.
bool areNamesKnown(const Options& options) {
  std::vector<std::string> known = growthNames();
  if (!options.growth) {
    known.clear();
    for (const auto& [name, run] : cases()) known.push_back(name);
  }
  return std::ranges::all_of(options.names, [&](const std::string& start) {
    return std::ranges::any_of(known,
                               [&](const std::string& name) { return name.starts_with(start); });
  });
}

/// Returns whether no case has failed.
bool compareWithPeers(const Options& options, Report& report) {
  bool succeeded = true;
  std::puts("case\tmetric\tours\tpeer\tour value\tpeer value\tratio");
  for (const auto& [caseName, run] : cases()) {
    if (!isWanted(caseName, options.names)) continue;
    report.startCase(caseName);
    try {
      run(report);
    } catch (const std::exception& error) {
      std::fprintf(stderr, "zeb_bench: %s failed: %s\n", caseName.c_str(), error.what());
      succeeded = false;
    }
  }
  return succeeded;
}

}  // namespace

int main(int count, char** arguments) {
  Options options;
  for (int index = 1; index < count; ++index) {
    const std::string_view argument = arguments[index];
    if (argument == "--help") return explain(stdout, 0);
    if (argument == "--verbose") {
      options.verbose = true;
    } else if (argument == "--growth") {
      options.growth = true;
    } else if (argument == "--svg" && index + 1 < count) {
      options.picture = arguments[++index];
    } else if (argument.starts_with("-")) {
      return explain(stderr, 2);
    } else {
      options.names.emplace_back(argument);
    }
  }
  if (!areNamesKnown(options)) return explain(stderr, 2);

  bool succeeded, isDrawn = true;
  if (options.growth) {
    const std::vector<GrowthCurve> curves = measureGrowth(options.names);
    succeeded = std::ranges::none_of(curves, &GrowthCurve::isFault);
    if (!options.picture.empty()) isDrawn = drawGrowth(curves, options.picture);
  } else {
    Report report(options.verbose);
    succeeded = compareWithPeers(options, report);
    if (!options.picture.empty()) isDrawn = drawPicture(report.comparisons(), options.picture);
  }
  if (!isDrawn) {
    std::fprintf(stderr, "zeb_bench: the picture %s can't be written\n", options.picture.c_str());
  }
  return succeeded && isDrawn ? 0 : 1;
}
