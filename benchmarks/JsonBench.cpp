#include "JsonBench.h"

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>

#include <chrono>
#include <thread>
#include <vector>

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

/// Keeps the first string of a document that is not short, and lets go of the rest.
struct OurString : Ours {
  Tree parse(const Text& text) { return firstString(Ours::parse(text)); }
  Tree firstString(const Tree& tree) {
    if (std::string(NSString(tree).utf8()).size() >= minKeptStringBytes) return tree;
    for (const Value& element : NSArray(tree)) {
      if (Tree found = firstString(element)) return found;
    }
    for (const auto& [key, member] : NSDictionary(tree)) {
      if (Tree found = firstString(member)) return found;
    }
    return {};
  }
};

struct OurDetachedString : OurString {
  Tree parse(const Text& text) { return OurString::parse(text).detachedCopy(); }
};

/// Most bytes of `names` are beyond ASCII, and hardly any of the other documents', so that it is
/// measured by itself. Without the public files, the generated `languages` takes its place.
enum class Documents { mostlyASCII, names };

bool belongsTo(const Document& document, Documents group) {
  const bool isNames = document.name == "names" || document.name == "languages";
  return isNames == (group == Documents::names);
}

/// Calls `measure(ours, theirs)` with the group's documents and each installed peer. Speeds are
/// reported in bytes of the original document for both, because no two libraries write the same
/// number of bytes.
template <class Measure>
void compareWith(const std::vector<JsonPeer>& peers, Documents group, Report& report,
                 const Measure& measure) {
  for (const JsonPeer& peer : peers) {
    if (!peer.make) {
      report.skip(peer.name);
      continue;
    }
    Comparison comparison{megabytesPerSecond, ourName, peer.name, {}};
    for (const Document& document : documents()) {
      if (!belongsTo(document, group)) continue;
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
    if (!comparison.samples.empty()) report.add(std::move(comparison));
  }
}

void measureParsing(Documents group, Report& report) {
  compareWith(jsonReaders(), group, report, [](JsonLibrary& ours, JsonLibrary& theirs) {
    return measureInTurns([&] { ours.parse(); }, [&] { theirs.parse(); });
  });
}

void measureWriting(Documents group, Report& report) {
  compareWith(jsonWriters(), group, report, [](JsonLibrary& ours, JsonLibrary& theirs) {
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

/// Compares what the heap grew by when each side kept its tree.
void compareMemory(const char* ourSide, MakeJsonLibrary makeOurs, const JsonPeer& peer,
                   Report& report) {
  if (!peer.make) return report.skip(peer.name);
  Comparison comparison{bytes, ourSide, peer.name, {}};
  for (const Document& document : documents()) {
    const auto bytesOfTree = [&](MakeJsonLibrary make) {
      make(document.text)->parse();  // so that what a library allocates once is not counted
      const auto library = make(document.text);
      const auto growth = static_cast<double>(heapGrowth([&] { library->keepTree(); }));
      return library->countValues() > 0 ? growth : 0;
    };
    const Comparison::Sample sample{document.name, bytesOfTree(makeOurs), bytesOfTree(peer.make)};
    require((sample.ours > 0) == (sample.peer > 0),
            document.name + ": only one side kept something");
    // Numbers have no string to keep.
    if (sample.ours > 0) comparison.samples.push_back(sample);
  }
  if (!comparison.samples.empty()) report.add(std::move(comparison));
}

void measureMemory(Report& report) {
  compareMemory(ourName, makeJsonLibrary<OurJson>, jsonTreeOwner(), report);
}

/// What stays allocated when one string of a document is kept. Ours keeps the whole document until
/// it is detached; the peer's strings have memory of their own.
void measureKeptString(Report& report) {
  compareMemory("string of a document", makeJsonLibrary<JsonAdapter<OurString>>, jsonStringKeeper(),
                report);
  compareMemory("detached string", makeJsonLibrary<JsonAdapter<OurDetachedString>>,
                jsonStringKeeper(), report);
}

/// Four threads visit all values of one parsed document again and again. Our handles of collections
/// count references, all of them in the document's one counter; the peer's are not counted, and the
/// parser must outlive them.
void measureParallelReading(Report& report) {
  constexpr std::size_t threadCount = 4;
  constexpr std::size_t minVisits = 100'000;  // of each thread, so that its start hardly counts
  const JsonPeer peer = jsonUncountedReader();
  if (!peer.make) return report.skip(peer.name);
  Comparison comparison{nanoseconds, "4 threads, NSJSONSerialization", peer.name, {}};
  for (const Document& document : documents()) {
    OurJson ours(document.text);
    const auto theirs = peer.make(document.text);
    ours.keepTree();
    theirs->keepTree();
    const std::size_t count = ours.countValues();
    require(count > 0 && count == theirs->countValues(), document.name + " is read differently");
    const std::size_t rounds = minVisits / count + 1;
    const auto visit = [&](JsonLibrary& library) {
      std::vector<std::thread> threads;
      for (std::size_t thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&library, rounds] {
          for (std::size_t round = 0; round < rounds; ++round) consume(library.countValues());
        });
      }
      for (std::thread& thread : threads) thread.join();
    };
    const Seconds seconds = measureInTurns([&] { visit(ours); }, [&] { visit(*theirs); });
    const double scale = 1e9 / static_cast<double>(threadCount * rounds * count);
    comparison.samples.push_back({document.name, seconds.ours * scale, seconds.peer * scale});
  }
  report.add(std::move(comparison));
}

const Case parsing("json.parse",
                   [](Report& report) { measureParsing(Documents::mostlyASCII, report); });
const Case parsingNames("json.parse.names",
                        [](Report& report) { measureParsing(Documents::names, report); });
const Case freeing("json.free", measureFreeing);
const Case writing("json.write",
                   [](Report& report) { measureWriting(Documents::mostlyASCII, report); });
const Case writingNames("json.write.names",
                        [](Report& report) { measureWriting(Documents::names, report); });
const Case memory("json.memory", measureMemory);
const Case keptString("json.memory.string", measureKeptString);
const Case parallelReading("json.visit.parallel", measureParallelReading);

}  // namespace

}  // namespace zeb::bench
