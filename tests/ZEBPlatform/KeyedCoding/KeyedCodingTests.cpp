#include <ZEBPlatform/KeyedCoding.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "Support/Support.h"

namespace zeb::test {

namespace {

struct Track : NSObject, NSSecureCoding {
  Track(std::int64_t newLength, std::int32_t newRating, const NSString& newTitle)
      : length(newLength), rating(newRating), title(newTitle) {}
  static Ref<Track> initWithCoder(NSCoder& coder) {
    auto track =
        makeRef<Track>(coder.decodeIntegerForKey("length"), coder.decodeInt32ForKey("rating"),
                       coder.decodeStringForKey("title"));
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
  }
  static Class* runtimeClass() {
    static Class* const cls = registerClass("Track");
    return cls;
  }
  Class* classObject() const override { return runtimeClass(); }

  std::int64_t length;
  std::int32_t rating;
  NSString title;
};

NSString errorOf(const NSData& data) {
  NSError error;
  EXPECT_FALSE(NSKeyedUnarchiver::unarchivedObjectOfClass<Track>(data, &error));
  return error.localizedDescription();
}

std::string archiveOf(const std::string& fields) {
  return R"({"archive":"keyed","version":1,"class":"Track","fields":)" + fields + "}";
}

}  // namespace

TEST(KeyedCoding, ReturnsWhatWasWritten) {
  const NSString odd(std::u16string(u"\"\0\n", 3) + char16_t{0xD800});
  for (const NSString& title : {odd, NSString(""), NSString()}) {
    const auto track = makeRef<Track>(std::numeric_limits<std::int64_t>::min(), -1, title);
    const NSData data = NSKeyedArchiver::archivedDataWithRootObject(track);
    const auto read = NSKeyedUnarchiver::unarchivedObjectOfClass<Track>(data);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->length, track->length);
    EXPECT_EQ(read->rating, -1);
    EXPECT_EQ(read->title, title);
  }
  EXPECT_TRUE(NSKeyedArchiver::archivedDataWithRootObject(Ref<Track>()).isNil());
}

TEST(KeyedCoding, RefusesBadArchivesWithTheReason) {
  const std::pair<std::string, const char*> rows[] = {
      {"", "The data is no archive: it is not JSON."},
      {archiveOf("{").substr(5), "The data is no archive: it is not JSON."},
      {"[]", "The data is JSON, but no archive of one object."},
      {archiveOf("[]"), "The data is JSON, but no archive of one object."},
      {R"({"archive":"keyed","version":2,"class":"Track","fields":{}})",
       "The archive has the unknown version 2."},
      {R"({"archive":"keyed","version":1,"class":"NSObject","fields":{}})",
       "The archive contains a NSObject, but a Track was expected."},
      {archiveOf(R"({"title":1})"), "The field \"title\" is not a string."},
      {archiveOf(R"({"rating":"1"})"),
       "The field \"rating\" is not an integer between -2147483648 and 2147483647."},
      {archiveOf(R"({"rating":2147483648})"),
       "The field \"rating\" is not an integer between -2147483648 and 2147483647."},
      {archiveOf(R"({"length":1.5})"),
       "The field \"length\" is not an integer between -9223372036854775808 and "
       "9223372036854775807."},
      {archiveOf(R"({"length":18446744073709551615})"),
       "The field \"length\" is not an integer between -9223372036854775808 and "
       "9223372036854775807."},
      {archiveOf(R"({"length":true})"),
       "The field \"length\" is not an integer between -9223372036854775808 and "
       "9223372036854775807."},
      {archiveOf(R"({"title":"bad"})"),
       "The operation couldn't be completed. (test error 7.)"},
  };
  for (const auto& [document, message] : rows) {
    EXPECT_EQ(errorOf(NSData::dataWithBytes(document)), message) << document;
  }
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
}

}  // namespace zeb::test
