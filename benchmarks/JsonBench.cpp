#include "JsonBench.h"

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>

#include <chrono>

#include "Documents.h"
#include "Heap.h"

namespace zeb::bench {

namespace {

constexpr const char* ourName = "NSJSONSerialization";

struct Ours {
  struct Text : NSData {
    explicit Text(std::string_view text) : NSData(NSData::dataWithBytes(text)) {}
  };
  using Tree = Value;
  Tree parse(const Text& text) { return NSJSONSerialization::JSONObjectWithData(text, 0); }
  std::size_t count(const Tree& tree) {
    std::size_t result = tree.isNil() ? 0 : 1;
    for (const Value& element : NSArray(tree)) result += count(element);
    for (const auto& [key, member] : NSDictionary(tree)) result += count(member);
    return result;
  }
  NSData write(const Tree& tree) {
    return NSJSONSerialization::dataWithJSONObject(tree, NSJSONWritingWithoutEscapingSlashes);
  }
  std::string copy(const NSData& written) { return std::string(written.view()); }
};

using OurJson = JsonAdapter<Ours>;

/// Calls `measure(ours, theirs)` with every document and each installed peer. Speeds are reported
/// in bytes of the original document for both, because no two libraries write the same number of
/// bytes.
template <class Measure>
void compareWith(const std::vector<JsonPeer>& peers, Report& report, const Measure& measure) {
  for (const JsonPeer& peer : peers) {
    if (!peer.make) {
      report.skip(peer.name);
      continue;
    }
    Comparison comparison{megabytesPerSecond, ourName, peer.name, {}};
    for (const Document& document : documents()) {
      OurJson ours(document.text);
      const auto theirs = peer.make(document.text);
      ours.keepTree();
      theirs->keepTree();
      require(ours.countValues() > 0 && ours.countValues() == theirs->countValues(),
              "we and " + comparison.peer + " read " + document.name + " differently");
      const Seconds seconds = measure(ours, *theirs);
      const double megabytes = static_cast<double>(document.text.size()) / 1e6;
      comparison.samples.push_back(
          {document.name, megabytes / seconds.ours, megabytes / seconds.peer});
    }
    report.add(std::move(comparison));
  }
}

void measureParsing(Report& report) {
  compareWith(jsonReaders(), report, [](JsonLibrary& ours, JsonLibrary& theirs) {
    return measureInTurns([&] { ours.parse(); }, [&] { theirs.parse(); });
  });
}

void measureWriting(Report& report) {
  compareWith(jsonWriters(), report, [](JsonLibrary& ours, JsonLibrary& theirs) {
    // The texts may differ in the order of keys and in the form of numbers, but not in content.
    OurJson ourText(ours.written()), theirText(theirs.written());
    ourText.keepTree();
    theirText.keepTree();
    require(ourText.countValues() == ours.countValues() &&
                theirText.countValues() == ours.countValues(),
            "the written documents differ from the original");
    return measureInTurns([&] { ours.write(); }, [&] { theirs.write(); });
  });
}

/// The clock is read around every call. This is to our disadvantage: freeing a small tree takes
/// hardly longer than reading the clock.
void measureFreeing(Report& report) {
  constexpr double bound = 2;
  using Clock = std::chrono::steady_clock;
  Comparison comparison{{"% of parsing", false}, ourName, "bound of 2 %", {}};
  for (const Document& document : documents()) {
    const Ours::Text text(document.text);
    std::vector<double> percents;
    for (int turn = 0; turn < 100; ++turn) {
      const auto start = Clock::now();
      Value tree = Ours().parse(text);
      consume(tree);
      const auto parsed = Clock::now();
      tree = nullptr;
      consume(tree);
      const auto freed = Clock::now();
      percents.push_back(100 * static_cast<double>((freed - parsed).count()) /
                         static_cast<double>((parsed - start).count()));
    }
    comparison.samples.push_back({document.name, median(std::move(percents)), bound});
  }
  report.add(std::move(comparison));
}

void measureMemory(Report& report) {
  const JsonPeer peer = jsonTreeOwner();
  if (!peer.make) return report.skip(peer.name);
  Comparison comparison{bytes, ourName, peer.name, {}};
  for (const Document& document : documents()) {
    const auto bytesOfTree = [&](MakeJsonLibrary make) {
      make(document.text)->parse();  // so that what a library allocates once is not counted
      const auto library = make(document.text);
      const auto growth = static_cast<double>(heapGrowth([&] { library->keepTree(); }));
      require(growth > 0 && library->countValues() > 0, document.name + " gave no tree");
      return growth;
    };
    comparison.samples.push_back(
        {document.name, bytesOfTree(makeJsonLibrary<OurJson>), bytesOfTree(peer.make)});
  }
  report.add(std::move(comparison));
}

const Case parsing("json.parse", measureParsing);
const Case freeing("json.free", measureFreeing);
const Case writing("json.write", measureWriting);
const Case memory("json.memory", measureMemory);

}  // namespace

}  // namespace zeb::bench
