#include <ZEBPlatform/Json/NSJSONSerialization.h>
#include <ZEBUtilities/Coding/ZEBArchiver.h>
#include <ZEBUtilities/Coding/ZEBUnarchiver.h>

#include "Bench.h"
#include "Growth.h"

namespace zeb::bench {

namespace {

/// The element of the archives. The documents of the JSON lines have the same content.
struct User {
  User(std::int64_t number, NSString userName) : id(number), name(std::move(userName)) {}
  explicit User(ZEBDecoder& decoder)
      : id(decoder.decodeInt64ForKey("id")), name(decoder.decodeStringForKey("name")) {}
  static const char* encodableName() { return "GrowthUser"; }
  void encode(ZEBEncoder& encoder) const {
    encoder.encodeInt64(id, "id");
    encoder.encodeString(name, "name");
  }

  std::int64_t id;
  NSString name;
};

struct Users {
  Users() = default;
  explicit Users(ZEBDecoder& decoder) : all(decoder.decodeObjectForKey<std::vector<User>>("all")) {}
  static const char* encodableName() { return "GrowthUsers"; }
  void encode(ZEBEncoder& encoder) const { encoder.encodeObject(all, "all"); }

  std::vector<User> all;
};

Users makeUsers(std::size_t count) {
  Users users;
  users.all.reserve(count);
  for (std::size_t number = 0; number < count; ++number) {
    users.all.emplace_back(static_cast<std::int64_t>(number),
                           NSString("user " + std::to_string(number)));
  }
  return users;
}

NSData makeArchive(std::size_t count) { return ZEBArchiver().archivedData(makeUsers(count)); }

const ZEBUnarchiver& unarchiver() {
  static const ZEBUnarchiver shared(
      makeRef<BasicDecodingBuilderRegistry>(std::initializer_list<BuilderSpec>{
          BuilderSpec::decodableType<Users>(), BuilderSpec::decodableType<User>()}));
  return shared;
}

NSData makeText(std::size_t count) {
  std::string text = "[";
  for (std::size_t number = 0; number < count; ++number) {
    const std::string label = std::to_string(number);
    text += (number ? ",{\"id\":" : "{\"id\":") + label + ",\"name\":\"user " + label + "\"}";
  }
  return NSData::dataWithBytes(text + "]");
}

Value parse(const NSData& text) { return NSJSONSerialization::JSONObjectWithData(text, 0); }

const GrowthCase parsing(GrowthPlot::documents, "json.parse", makeText,
                         [](const NSData& text) { consume(parse(text)); });

const GrowthCase writingJson(
    GrowthPlot::documents, "json.write", [](std::size_t count) { return parse(makeText(count)); },
    [](const Value& value) { consume(NSJSONSerialization::dataWithJSONObject(value, 0)); });

const GrowthCase writingArchive(GrowthPlot::documents, "archive.write", makeUsers,
                                [](const Users& users) {
                                  consume(ZEBArchiver().archivedData(users));
                                });

const GrowthCase readingArchive(GrowthPlot::documents, "archive.read", makeArchive,
                                [](const NSData& archive) {
                                  consume(unarchiver().unarchivedRootObject<Users>(archive));
                                });

}  // namespace

}  // namespace zeb::bench
