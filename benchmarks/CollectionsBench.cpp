#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>
#include <ZEBUtilities/Collections/NSArray+ZEBAdditions.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "Bench.h"
#include "CollectionsPeers.h"
#include "Documents.h"

#if ZEB_BENCH_HAVE_ABSL
#include <absl/container/flat_hash_set.h>
#endif
#if ZEB_BENCH_HAVE_BOOST_JSON
#include <boost/json.hpp>
#endif

namespace zeb::bench {

namespace {

// Mapping, filtering and sorting. ----------------------------------------------------------------

#if ZEB_BENCH_HAVE_QT

constexpr std::size_t count = 1'000'000;

std::vector<std::int64_t> makeIntegers() {
  std::mt19937_64 random(1);
  std::vector<std::int64_t> integers(count);
  for (std::int64_t& integer : integers) integer = static_cast<std::int64_t>(random() >> 20);
  return integers;
}

std::vector<std::string> makeStrings() {
  std::mt19937_64 random(2);
  std::vector<std::string> strings(count);
  for (std::string& string : strings) {
    string = "user" + std::to_string(random() >> (random() % 40)) + "@example.org";
  }
  return strings;
}

template <class Element>
NSArray arrayOf(const std::vector<Element>& elements) {
  return NSArray::arrayWithObjects(std::vector<Value>(elements.begin(), elements.end()));
}

/// One input, as our array and as their list.
struct Input {
  const char* name;
  NSArray array;
  std::unique_ptr<ListPeer> peer;
};

std::vector<Input> makeInputs() {
  std::vector<Input> inputs;
  const std::vector<std::int64_t> integers = makeIntegers();
  const std::vector<std::string> strings = makeStrings();
  inputs.push_back({"integers", arrayOf(integers), makeQtIntegers(integers)});
  inputs.push_back({"strings", arrayOf(strings), makeQtStrings(strings)});
  return inputs;
}

/// Measures one operation on all inputs. `ours` answers the result's count.
template <class Ours>
void measure(Report& report, const Ours& ours, std::size_t (ListPeer::*theirs)() const) {
  Comparison comparison{nanoseconds, "NSArray", "QVariantList, std algorithms", {}};
  for (const Input& input : makeInputs()) {
    require(ours(input.array) == (*input.peer.*theirs)(), "the results have different counts");
    const Seconds seconds = measureInTurns([&] { consume(ours(input.array)); },
                                           [&] { consume((*input.peer.*theirs)()); });
    comparison.samples.push_back(
        {input.name, seconds.ours / count * 1e9, seconds.peer / count * 1e9});
  }
  report.add(comparison);
}

void measureMap(Report& report) {
  measure(
      report,
      [](const NSArray& array) {
        const bool hasStrings = array.firstObject().isString();
        return (hasStrings
                    ? zeb_map(array, &NSString::length)
                    : zeb_map(array, [](const Value& value) { return value.longLongValue() + 1; }))
            .count();
      },
      &ListPeer::map);
}

void measureFilter(Report& report) {
  measure(
      report,
      [](const NSArray& array) {
        return zeb_filterWithBlock(
                   array,
                   [](const Value& value) {
                     return (value.isString() ? static_cast<std::int64_t>(NSString(value).length())
                                              : value.longLongValue()) %
                                2 ==
                            0;
                   })
            .count();
      },
      &ListPeer::filter);
}

void measureSort(Report& report) {
  measure(
      report, [](const NSArray& array) { return zeb_sortedArray(array).count(); }, &ListPeer::sort);
}

#else

void measureMap(Report& report) { report.skip("QVariantList"); }
void measureFilter(Report& report) { report.skip("QVariantList"); }
void measureSort(Report& report) { report.skip("QVariantList"); }

#endif

// Removing duplicates. ---------------------------------------------------------------------------

#if ZEB_BENCH_HAVE_ABSL

/// Of each text, half of its occurrences are duplicates.
std::vector<std::size_t> makeNumbers(std::size_t amount) {
  std::mt19937 random(3);
  std::vector<std::size_t> numbers(amount);
  for (std::size_t index = 0; index < amount; ++index) numbers[index] = index / 2;
  std::shuffle(numbers.begin(), numbers.end(), random);
  return numbers;
}

/// `theirs` answers the count of different texts.
template <class Theirs>
void measureDedupe(Report& report, const char* input, const NSArray& array, const char* peer,
                   const Theirs& theirs) {
  const auto ours = [&] { return zeb_arrayByRemovingDuplicates(array).count(); };
  require(ours() == theirs(), "the results have different counts");
  report.add(nanosecondsEach(
      std::string("NSArray, ") + input, std::string("absl::flat_hash_set<std::string>, ") + peer,
      measureInTurns([&] { consume(ours()); }, [&] { consume(theirs()); }), array.count()));
}

/// The count of different texts that `textOf` makes of the things.
template <class Things, class TextOf>
std::size_t countDistinct(const Things& things, const TextOf& textOf) {
  absl::flat_hash_set<std::string> known;
  std::vector<std::size_t> distinct;
  std::size_t position = 0;
  for (const auto& thing : things) {
    if (known.insert(textOf(thing)).second) distinct.push_back(position);
    ++position;
  }
  return distinct.size();
}

void measureStrings(Report& report) {
  std::vector<std::string> texts;
  for (const std::size_t number : makeNumbers(1'000'000)) {
    texts.push_back("user" + std::to_string(number) + "@example.org");
  }
  const NSArray strings = NSArray::arrayWithObjects(std::vector<Value>(texts.begin(), texts.end()));
  measureDedupe(report, "strings", strings, "strings",
                [&] { return countDistinct(texts, std::identity()); });
}

/// Records that were parsed from one document.
void measureRecords(Report& report) {
  std::vector<std::string> texts;
  std::string document = "[";
  for (const std::size_t number : makeNumbers(10'000)) {
    texts.push_back(makeRecord(number));
    document += (document.size() > 1 ? "," : "") + texts.back();
  }
  document += "]";
  const NSArray records(
      NSJSONSerialization::JSONObjectWithData(NSData::dataWithBytes(document), 0));
#if ZEB_BENCH_HAVE_BOOST_JSON
  const boost::json::value parsed = boost::json::parse(document);
  const auto serialize = [](const boost::json::value& record) {
    return boost::json::serialize(record);
  };
  measureDedupe(report, "parsed records", records, "serializing parsed records",
                [&] { return countDistinct(parsed.as_array(), serialize); });
#endif
  measureDedupe(report, "parsed records", records, "records serialized before",
                [&] { return countDistinct(texts, std::identity()); });
}

void measureDedupes(Report& report) {
  measureStrings(report);
  measureRecords(report);
}

#else

void measureDedupes(Report& report) { report.skip("absl::flat_hash_set"); }

#endif

const Case map("array.map", measureMap);
const Case filter("array.filter", measureFilter);
const Case sorting("array.sort", measureSort);
const Case dedupe("array.dedupe", measureDedupes);

}  // namespace

}  // namespace zeb::bench
