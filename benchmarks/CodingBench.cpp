#include "Bench.h"

#include <algorithm>

#if ZEB_BENCH_HAVE_CEREAL
// Another namespace than that of the JSON cases, which compile RapidJSON with other settings.
#define RAPIDJSON_NAMESPACE cereal_rapidjson
#include <ZEBUtilities/Coding/ZEBArchiver.h>
#include <ZEBUtilities/Coding/ZEBUnarchiver.h>

#include <cereal/archives/json.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/variant.hpp>
#include <cereal/types/vector.hpp>
#include <sstream>
#include <variant>
#endif

namespace zeb::bench {

namespace {

constexpr const char* peerName = "cereal, JSON";

#if ZEB_BENCH_HAVE_CEREAL

// The objects, with NSString for us and with std::string for cereal.

template <class Text>
struct Author {
  Author() = default;
  explicit Author(ZEBDecoder& decoder)
      : id(decoder.decodeInt64ForKey("id")),
        name(decoder.decodeStringForKey("name")),
        isVerified(decoder.decodeBoolForKey("isVerified")) {}
  static const char* encodableName() { return "Author"; }
  void encode(ZEBEncoder& encoder) const {
    encoder.encodeInt64(id, "id");
    encoder.encodeString(name, "name");
    encoder.encodeBool(isVerified, "isVerified");
  }
  template <class Archive>
  void serialize(Archive& archive) {
    archive(CEREAL_NVP(id), CEREAL_NVP(name), CEREAL_NVP(isVerified));
  }
  bool operator==(const Author&) const = default;

  std::int64_t id = 0;
  Text name;
  bool isVerified = false;
};

template <class Text>
struct Post {
  Post() = default;
  explicit Post(ZEBDecoder& decoder)
      : id(decoder.decodeInt64ForKey("id")),
        createdAt(decoder.decodeDoubleForKey("createdAt")),
        score(decoder.decodeDoubleForKey("score")),
        isPinned(decoder.decodeBoolForKey("isPinned")),
        source(decoder.decodeStringForKey("source")),
        text(decoder.decodeStringForKey("text")),
        tags(decoder.decodeObjectForKey<std::vector<Text>>("tags")),
        author(decoder.decodeObjectForKey<Author<Text>>("author")) {}
  static const char* encodableName() { return "Post"; }
  void encode(ZEBEncoder& encoder) const {
    encoder.encodeInt64(id, "id");
    encoder.encodeDouble(createdAt, "createdAt");
    encoder.encodeDouble(score, "score");
    encoder.encodeBool(isPinned, "isPinned");
    encoder.encodeString(source, "source");
    encoder.encodeString(text, "text");
    encoder.encodeObject(tags, "tags");
    encoder.encodeObject(author, "author");
  }
  template <class Archive>
  void serialize(Archive& archive) {
    archive(CEREAL_NVP(id), CEREAL_NVP(createdAt), CEREAL_NVP(score), CEREAL_NVP(isPinned),
            CEREAL_NVP(source), CEREAL_NVP(text), CEREAL_NVP(tags), CEREAL_NVP(author));
  }
  bool operator==(const Post&) const = default;

  std::int64_t id = 0;
  double createdAt = 0;
  double score = 0;
  bool isPinned = false;
  Text source;
  Text text;
  std::vector<Text> tags;
  Author<Text> author;
};

template <class Text>
struct Poll {
  Poll() = default;
  explicit Poll(ZEBDecoder& decoder)
      : id(decoder.decodeInt64ForKey("id")),
        question(decoder.decodeStringForKey("question")),
        votes(decoder.decodeObjectForKey<std::vector<std::int64_t>>("votes")),
        isOpen(decoder.decodeBoolForKey("isOpen")) {}
  static const char* encodableName() { return "Poll"; }
  void encode(ZEBEncoder& encoder) const {
    encoder.encodeInt64(id, "id");
    encoder.encodeString(question, "question");
    encoder.encodeObject(votes, "votes");
    encoder.encodeBool(isOpen, "isOpen");
  }
  template <class Archive>
  void serialize(Archive& archive) {
    archive(CEREAL_NVP(id), CEREAL_NVP(question), CEREAL_NVP(votes), CEREAL_NVP(isOpen));
  }
  bool operator==(const Poll&) const = default;

  std::int64_t id = 0;
  Text question;
  std::vector<std::int64_t> votes;
  bool isOpen = false;
};

constexpr std::size_t objects = 10'000;

/// Every third object is a poll.
template <class Text, class Object>
std::vector<Object> makeObjects() {
  std::vector<Object> result;
  for (std::int64_t number = 0; number < static_cast<std::int64_t>(objects); ++number) {
    const std::int64_t id = 1'000'000'007 * number;
    const std::string label = std::to_string(number);
    if (number % 3 == 2) {
      Poll<Text> poll;
      poll.id = id;
      poll.question = Text("Which of these " + label + " is it?");
      poll.votes = {number, 2 * number, number % 7};
      poll.isOpen = number % 2 == 0;
      result.emplace_back(std::move(poll));
    } else {
      Post<Text> post;
      post.id = id;
      post.createdAt = 1.7e9 + static_cast<double>(number) * 61.125;
      post.score = static_cast<double>(number) / 7;
      post.isPinned = number % 5 == 0;
      post.source = Text("<a href=\"https://example.org/\">client " + label + "</a>");
      post.text = Text("Schöne Grüße aus 東京, Nachricht " + label);
      post.tags = {Text("news"), Text("tag" + label)};
      post.author.id = id % 1009;
      post.author.name = Text("author_" + label);
      post.author.isVerified = number % 11 == 0;
      result.emplace_back(std::move(post));
    }
  }
  return result;
}

using TheirObject = std::variant<Post<std::string>, Poll<std::string>>;

struct Theirs {
  std::string write() const {
    std::ostringstream stream;
    {
      cereal::JSONOutputArchive archive(stream, cereal::JSONOutputArchive::Options::NoIndent());
      archive(all);
    }  // its destructor completes the text
    return std::move(stream).str();
  }
  static std::vector<TheirObject> read(std::istringstream& document) {
    document.clear();
    document.seekg(0);
    std::vector<TheirObject> result;
    cereal::JSONInputArchive archive(document);
    archive(result);
    return result;
  }

  std::vector<TheirObject> all = makeObjects<std::string, TheirObject>();
};

/// The root of our document.
struct Timeline {
  Timeline() : all(makeObjects<NSString, ZEBEncodable>()) {}
  explicit Timeline(ZEBDecoder& decoder)
      : all(decoder.decodeObjectForKey<std::vector<ZEBEncodable>>("all")) {}
  static const char* encodableName() { return "Timeline"; }
  void encode(ZEBEncoder& encoder) const { encoder.encodeObject(all, "all"); }

  std::vector<ZEBEncodable> all;
};

template <class Object>
bool areEqual(const ZEBEncodable& left, const ZEBEncodable& right) {
  return left.as<Object>() && right.as<Object>() && *left.as<Object>() == *right.as<Object>();
}

struct Ours {
  NSData write() const { return ZEBArchiver().archivedData(timeline); }
  Timeline read(const NSData& document) const {
    return unarchiver.unarchivedRootObject<Timeline>(document);
  }
  bool isLike(const Timeline& other) const {
    return std::equal(timeline.all.begin(), timeline.all.end(), other.all.begin(), other.all.end(),
                      [](const ZEBEncodable& left, const ZEBEncodable& right) {
                        return areEqual<Post<NSString>>(left, right) ||
                               areEqual<Poll<NSString>>(left, right);
                      });
  }

  Timeline timeline;
  ZEBUnarchiver unarchiver{makeRef<BasicDecodingBuilderRegistry>(std::initializer_list<BuilderSpec>{
      BuilderSpec::decodableType<Timeline>(), BuilderSpec::decodableType<Post<NSString>>(),
      BuilderSpec::decodableType<Poll<NSString>>(),
      BuilderSpec::decodableType<Author<NSString>>()})};
};

void addResult(Report& report, const Seconds& seconds) {
  constexpr double factor = 1e9 / static_cast<double>(objects);
  report.add({{"ns per object", false},
              "ZEBArchiver",
              peerName,
              {{"", seconds.ours * factor, seconds.peer * factor}}});
}

void measureWriting(Report& report) {
  const Ours ours;
  const Theirs theirs;
  addResult(report,
            measureInTurns([&] { consume(ours.write()); }, [&] { consume(theirs.write()); }));
}

void measureReading(Report& report) {
  const Ours ours;
  const Theirs theirs;
  const NSData ourDocument = ours.write();
  std::istringstream theirDocument(theirs.write());
  require(ours.isLike(ours.read(ourDocument)), "our archive does not give the written objects");
  require(theirs.all == Theirs::read(theirDocument),
          "the peer's archive does not give the written objects");
  addResult(report, measureInTurns([&] { consume(ours.read(ourDocument)); },
                                   [&] { consume(Theirs::read(theirDocument)); }));
}

#else

void measureWriting(Report& report) { report.skip(peerName); }
void measureReading(Report& report) { report.skip(peerName); }

#endif

const Case writing("archive.write", measureWriting);
const Case reading("archive.read", measureReading);

}  // namespace

}  // namespace zeb::bench
