#include <ZEBPlatform/Foundation/NSDictionary.h>

#include <algorithm>
#include <random>

#include "Bench.h"

#if ZEB_BENCH_HAVE_ABSL
#include <absl/container/flat_hash_map.h>
#include <absl/strings/string_view.h>
#endif

namespace zeb::bench {

namespace {

constexpr const char* peerName = "absl::flat_hash_map";

#if ZEB_BENCH_HAVE_ABSL

// clang-format off
#define ZEB_BENCH_LITERALS(USE) \
  USE("id") USE("name") USE("created_at") USE("text") USE("user") USE("followers_count") \
  USE("profile_image_url") USE("lang") USE("entities") USE("in_reply_to_status_id") USE("url") \
  USE("favorited")
// clang-format on
constexpr std::size_t literals = 12;

/// As large as a `Value`. As with a `Value`, the kind is tested before the content is read.
struct Payload {
  std::int64_t integerValue() const { return isInteger ? integer : 0; }
  std::uint64_t isInteger = 0;
  std::int64_t integer = 0;
};

std::vector<std::string> makeKeys(std::size_t count) {
  std::vector<std::string> keys;
#define ZEB_BENCH_USE(literal) keys.emplace_back(literal);
  ZEB_BENCH_LITERALS(ZEB_BENCH_USE)
#undef ZEB_BENCH_USE
  for (const char* subject : {"status", "profile", "retweet", "place", "media", "list", "thread",
                              "attachment", "poll", "card", "draft", "x", "notification_badge"}) {
    for (const char* attribute :
         {"id", "id_str", "count", "url", "color", "is_enabled", "text", "created_at", "owner",
          "kind", "display_name", "w", "expires", "background_image_url", "state"}) {
      keys.push_back(std::string(subject) + "_" + attribute);
    }
  }
  require(count <= keys.size(), "too few keys");
  keys.resize(count);
  return keys;
}

/// The same entries in both, and keys to look up: equal to the stored ones, but other objects.
struct Tables {
  explicit Tables(std::size_t count) : keys(makeKeys(count)) {
    NSMutableDictionary entries;
    for (const std::string& key : keys) {
      const auto integer = static_cast<std::int64_t>(theirs.size() + 1);
      entries.setObject(integer, NSString(key));
      theirs[key] = Payload{1, integer};
    }
    ours = entries.copy();
    std::shuffle(keys.begin(), keys.end(), std::mt19937_64(1));
    ourKeys.assign(keys.begin(), keys.end());
  }

  NSDictionary ours;
  absl::flat_hash_map<std::string, Payload> theirs;
  std::vector<std::string> keys;
  std::vector<NSString> ourKeys;
};

/// Looks every key up once and returns the sum of the integers found.
using Lookup = std::int64_t (*)(const Tables& tables);

std::int64_t findOurKeys(const Tables& tables) {
  std::int64_t sum = 0;
  for (const NSString& key : tables.ourKeys) {
    sum += tables.ours.find(key)->integerValue();
    consume(sum);
  }
  return sum;
}

std::int64_t findTheirKeys(const Tables& tables) {
  std::int64_t sum = 0;
  for (const std::string& key : tables.keys) {
    sum += tables.theirs.find(key)->second.integerValue();
    consume(sum);
  }
  return sum;
}

std::int64_t findOurLiterals(const Tables& tables) {
  std::int64_t sum = 0;
#define ZEB_BENCH_USE(literal)                      \
  sum += tables.ours.find(literal)->integerValue(); \
  consume(sum);
  ZEB_BENCH_LITERALS(ZEB_BENCH_USE)
#undef ZEB_BENCH_USE
  return sum;
}

std::int64_t findTheirLiterals(const Tables& tables) {
  std::int64_t sum = 0;
#define ZEB_BENCH_USE(literal)                                                  \
  sum += tables.theirs.find(absl::string_view(literal))->second.integerValue(); \
  consume(sum);
  ZEB_BENCH_LITERALS(ZEB_BENCH_USE)
#undef ZEB_BENCH_USE
  return sum;
}

/// Views of literals that exist before the look-up. g++ 12 copies a fresh view in a way that stalls
/// the processor, which costs more than the look-up itself.
std::int64_t findTheirConstants(const Tables& tables) {
  std::int64_t sum = 0;
#define ZEB_BENCH_USE(literal)                             \
  {                                                        \
    static constexpr absl::string_view key(literal);       \
    sum += tables.theirs.find(key)->second.integerValue(); \
    consume(sum);                                          \
  }
  ZEB_BENCH_LITERALS(ZEB_BENCH_USE)
#undef ZEB_BENCH_USE
  return sum;
}

void compare(Report& report, const Tables& tables, std::size_t lookups, Lookup ours,
             const std::string& peer, Lookup theirs) {
  require(ours(tables) == theirs(tables), "we and " + peer + " found different values");
  const Seconds round =
      measureInTurns([&] { consume(ours(tables)); }, [&] { consume(theirs(tables)); });
  const double factor = 1e9 / static_cast<double>(lookups);
  report.add({nanoseconds, "NSDictionary", peer, {{"", round.ours * factor, round.peer * factor}}});
}

template <std::size_t entries>
void measureKeys(Report& report) {
  compare(report, Tables(entries), entries, findOurKeys, peerName, findTheirKeys);
}

template <std::size_t entries>
void measureLiterals(Report& report) {
  const Tables tables(entries);
  compare(report, tables, literals, findOurLiterals, peerName, findTheirLiterals);
  compare(report, tables, literals, findOurLiterals, std::string(peerName) + ", constant views",
          findTheirConstants);
}

#else

template <std::size_t>
void measureKeys(Report& report) {
  report.skip(peerName);
}

template <std::size_t>
void measureLiterals(Report& report) {
  report.skip(peerName);
}

#endif

const Case keyOf12("dict.lookup.key.12", measureKeys<12>);
const Case keyOf200("dict.lookup.key.200", measureKeys<200>);
const Case literalOf12("dict.lookup.literal.12", measureLiterals<12>);
const Case literalOf200("dict.lookup.literal.200", measureLiterals<200>);

}  // namespace

}  // namespace zeb::bench
