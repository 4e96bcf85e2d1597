#include <ZEBPlatform/Foundation/NSSet.h>
#include <ZEBPlatform/Json/NSJSONSerialization.h>

#include <string>
#include <vector>

#include "Bench.h"
#include "Documents.h"

#if ZEB_BENCH_HAVE_ABSL
#include <absl/container/flat_hash_set.h>
#endif

namespace zeb::bench {

namespace {

constexpr const char* peerName = "absl::flat_hash_set, serialized strings";

#if ZEB_BENCH_HAVE_ABSL

constexpr std::size_t records = 10'000;

/// Inserts all records into a new set: our set the parsed dictionaries, their set copies of the
/// texts.
void measureInserting(Report& report) {
  std::vector<std::string> texts;
  std::string document = "[";
  for (std::size_t number = 0; number < records; ++number) {
    texts.push_back(makeRecord(number));
    document += (number ? "," : "") + texts.back();
  }
  document += "]";
  const NSArray parsed(NSJSONSerialization::JSONObjectWithData(NSData::dataWithBytes(document), 0));
  require(parsed.count() == records, "the records were not parsed");
  const auto ours = [&] {
    NSMutableSet set;
    for (const Value& record : parsed) set.addObject(record);
    return set.count();
  };
  const auto theirs = [&] {
    absl::flat_hash_set<std::string> set;
    for (const std::string& text : texts) set.insert(text);
    return set.size();
  };
  require(ours() == records && theirs() == records, "different records were treated as equal");
  report.add(nanosecondsEach("NSMutableSet", peerName,
                             measureInTurns([&] { consume(ours()); }, [&] { consume(theirs()); }),
                             records));
}

#else

void measureInserting(Report& report) { report.skip(peerName); }

#endif

const Case inserting("set.insert", measureInserting);

}  // namespace

}  // namespace zeb::bench
