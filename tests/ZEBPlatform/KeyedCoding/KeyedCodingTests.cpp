#include <ZEBPlatform/KeyedCoding.h>
#include <ZEBPlatform/Runtime/Registration.h>

#include "Support/Support.h"

namespace zeb::test {

struct Track : NSObject, NSSecureCoding {
  static Ref<Track> initWithCoder(NSCoder& coder) {
    auto track = makeRef<Track>();
    track->length = coder.decodeIntegerForKey("length");
    track->rating = coder.decodeInt32ForKey("rating");
    track->title = coder.decodeStringForKey("title");
    track->tags = coder.decodeArrayOfStringsForKey("tags");
    if (track->title.isEqual("bad")) {
      coder.failWithError(NSError("test", 7));
      coder.failWithError(NSError("test", 8));
    }
    return track;
  }
  void encodeWithCoder(NSCoder& coder) const override {
    coder.encodeInteger(0, "length");
    coder.encodeInteger(length, "length");
    coder.encodeInt32(rating, "rating");
    coder.encodeObject(title, "title");
    coder.encodeObject(tags, "tags");
  }
  static Class* runtimeClass() {
    static Class* const cls = registerClass("Track");
    return cls;
  }
  Class* classObject() const override { return runtimeClass(); }

  std::int64_t length = INT64_MIN;
  std::int32_t rating = -1;
  NSString title;
  NSArray tags;
};

TEST(KeyedCoding, ReturnsWhatWasWritten) {
  const NSString odd(std::u16string(u"\"\0\n", 3) + char16_t{0xD800});
  for (const NSString& title : {odd, NSString(""), NSString()}) {
    const auto track = makeRef<Track>();
    track->title = title;
    if (!title.empty()) track->tags = NSArray{title, ""};
    const NSData data = NSKeyedArchiver::archivedDataWithRootObject(track);
    const auto read = NSKeyedUnarchiver::unarchivedObjectOfClass<Track>(data);
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->length == INT64_MIN && read->rating == -1 && read->title == title);
    EXPECT_TRUE(read->tags == track->tags) << read->tags;
  }
  EXPECT_TRUE(NSKeyedArchiver::archivedDataWithRootObject(Ref<Track>()).isNil());
}

TEST(KeyedCoding, RefusesBadArchivesWithTheReason) {
  const std::string start = R"({"archive":"keyed","version":)";
  const auto archiveOf = [&](const char* fields) {
    return start + R"(1,"class":"Track","fields":)" + fields + "}";
  };
  const auto errorOf = [](const NSData& data) {
    NSError error;
    EXPECT_FALSE(NSKeyedUnarchiver::unarchivedObjectOfClass<Track>(data, &error));
    return error.localizedDescription();
  };
  const std::string noJSON = "The data is no archive: it is not JSON.";
  const std::string noArchive = "The data is JSON, but no archive of one object.";
  const std::string badRating =
      "The field \"rating\" is not an integer between -2147483648 and 2147483647.";
  const std::string badLength =
      "The field \"length\" is not an integer between -9223372036854775808 and "
      "9223372036854775807.";
  const std::pair<std::string, std::string> rows[] = {
      {"", noJSON},
      {archiveOf("{").substr(5), noJSON},
      {"[]", noArchive},
      {archiveOf("[]"), noArchive},
      {start + R"(2,"class":"Track","fields":{}})", "The archive has the unknown version 2."},
      {start + R"(1,"class":"NSObject","fields":{}})",
       "The archive contains a NSObject, but a Track was expected."},
      {archiveOf(R"({"title":1})"), "The field \"title\" is not a string."},
      {archiveOf(R"({"rating":"1"})"), badRating},
      {archiveOf(R"({"rating":2147483648})"), badRating},
      {archiveOf(R"({"length":1.5})"), badLength},
      {archiveOf(R"({"length":18446744073709551615})"), badLength},
      {archiveOf(R"({"length":true})"), badLength},
      {archiveOf(R"({"tags":"a"})"), "The field \"tags\" is not an array of strings."},
      {archiveOf(R"({"tags":["a",1]})"), "The field \"tags\" is not an array of strings."},
      {archiveOf(R"({"title":"bad"})"), "The operation couldn't be completed. (test error 7.)"}};
  for (const auto& [document, message] : rows)
    EXPECT_EQ(errorOf(NSData::dataWithBytes(document)), NSString(message)) << document;
  EXPECT_EQ(errorOf(nullptr), "There is no data to read an archive from.");
  const auto empty = NSKeyedUnarchiver::unarchivedObjectOfClass<Track>(
      NSData::dataWithBytes(archiveOf("{\"other\":[]}")));
  EXPECT_EQ(empty->length + empty->rating, 0);
  EXPECT_TRUE(empty->title.isNil());
}

TEST(KeyedCoding, RaisesForTheWrongDirectionAndForMissingKeys) {
  NSKeyedArchiver archiver;
  EXPECT_EQ(raisedName([&] { (void)archiver.decodeIntegerForKey("a"); }),
            "NSInvalidArgumentException");
  EXPECT_EQ(raisedName([&] { archiver.encodeInteger(1, nullptr); }), "NSInvalidArgumentException");
  EXPECT_EQ(raisedName([&] { archiver.encodeObject(NSArray{"a", 1}, "b"); }),
            "NSInvalidArgumentException");
}

}  // namespace zeb::test
