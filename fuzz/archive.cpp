// Unarchives the input as objects of several types. Each result is archived, read and archived
// again: both documents must be the same.

#include <ZEBUtilities/Coding/ZEBArchiver.h>
#include <ZEBUtilities/Coding/ZEBRawValueEnumCodable.h>
#include <ZEBUtilities/Coding/ZEBUnarchiver.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace zeb {
namespace {

enum class Mood : std::int32_t { calm = 1, excited = 2 };
enum class Color : std::uint8_t { red, green };

}  // namespace

template <>
struct ZEBRawValueEnumTraits<Mood> {
  static const char* encodableName() { return "Mood"; }
  static constexpr std::array cases{Mood::calm, Mood::excited};
};
template <>
struct ZEBRawValueEnumTraits<Color> {
  static const char* encodableName() { return "Color"; }
  static constexpr std::array cases{std::pair{Color::red, "red"}, std::pair{Color::green, "green"}};
};

namespace {

struct Track {
  static const char* encodableName() { return "Track"; }
  explicit Track(ZEBDecoder& decoder)
      : title(decoder.decodeStringForKey("title")),
        seconds(decoder.decodeDoubleForKey("seconds", -1)),
        gain(decoder.decodeFloatForKey("gain", 1)),
        plays(decoder.decodeInt64ForKey("plays", 0)),
        rating(decoder.decodeNumberOptionalForKey("rating")),
        cover(decoder.decodeCGRectForKey("cover", CGRect())),
        part(decoder.decodeRangeForKey("part", NSRange())),
        mood(decoder.decodeObjectForKey<std::optional<ZEBRawValueEnumCodable<Mood>>>("mood")) {}
  void encode(ZEBEncoder& encoder) const {
    encoder.encodeString(title, "title");
    encoder.encodeDouble(seconds, "seconds");
    encoder.encodeFloat(gain, "gain");
    encoder.encodeInt64(plays, "plays");
    encoder.encodeNumber(rating, "rating");
    encoder.encodeCGRect(cover, "cover");
    encoder.encodeRange(part, "part");
    encoder.encodeObject(mood, "mood");
  }

  NSString title;
  double seconds;
  float gain;
  std::int64_t plays;
  NSNumber rating;
  CGRect cover;
  NSRange part;
  std::optional<ZEBRawValueEnumCodable<Mood>> mood;
};

struct Album {
  static const char* encodableName() { return "Album"; }
  explicit Album(ZEBDecoder& decoder)
      : tracks(decoder.decodeObjectForKey<std::vector<Track>>("tracks")),
        charts(decoder.decodeObjectForKey<Charts>("charts")),
        colors(decoder.decodeObjectForKey<Colors>("colors")),
        place(decoder.decodeObjectForKey<std::optional<Ref<CLLocation>>>("place")) {}
  void encode(ZEBEncoder& encoder) const {
    encoder.encodeObject(tracks, "tracks");
    encoder.encodeObject(charts, "charts");
    encoder.encodeObject(colors, "colors");
    encoder.encodeObject(place, "place");
  }

  using Charts = std::optional<std::map<std::string, std::vector<std::int32_t>>>;
  using Colors = std::optional<std::map<std::int64_t, std::vector<ZEBRawValueEnumCodable<Color>>>>;
  std::vector<Track> tracks;
  Charts charts;
  Colors colors;
  std::optional<Ref<CLLocation>> place;
};

/// Contains any value.
struct Shelf : ZEBObjCEncodable {
  explicit Shelf(ZEBDecoder& decoder) : content(decoder.decodeObjectForKey("content")) {}
  NSString encodableName() const override { return "Shelf"; }
  void encodeWithEncoder(ZEBEncoder& encoder) const override {
    encoder.encodeObject(content, "content");
  }
  Value content;
};

const ZEBUnarchiver& unarchiver() {
  static const auto* shared = new ZEBUnarchiver(makeRef<BasicDecodingBuilderRegistry>(
      std::initializer_list{
          BuilderSpec::decodableType<Album>(),
          BuilderSpec::objCBuildFunction("Shelf",
                                         [](ZEBDecoder& decoder) -> Ref<ZEBObjCEncodable> {
                                           return makeRef<Shelf>(decoder);
                                         })},
      makeRef<BasicDecodingBuilderRegistry>(
          std::initializer_list{BuilderSpec::decodableType<Track>(),
                                BuilderSpec::decodableType<ZEBRawValueEnumCodable<Mood>>(),
                                BuilderSpec::decodableType<ZEBRawValueEnumCodable<Color>>()})));
  return *shared;
}

template <class T>
void readWriteAndCompare(const NSData& input) {
  std::optional<T> object;
  try {
    object = unarchiver().unarchivedRootObject<T>(input);
  } catch (const NSError&) {
    return;
  } catch (const ZEBUnarchiverError&) {
    return;
  }
  NSData written;
  try {
    written = ZEBArchiver().archivedData(*object);
  } catch (const NSError& error) {
    // A component may be one level deeper in the written document than in the input.
    if (error.code() == NSPropertyListWriteInvalidError) return;
    throw;
  }
  const T again = unarchiver().unarchivedRootObject<T>(written);
  const NSData writtenAgain = ZEBArchiver().archivedData(again);
  if (writtenAgain.isEqual(written)) return;
  std::fprintf(stderr, "first:  %s\nsecond: %s\n", std::string(written.view()).c_str(),
               std::string(writtenAgain.view()).c_str());
  std::abort();
}

}  // namespace
}  // namespace zeb

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace zeb;
  const NSData input = NSData::dataWithBytes(std::as_bytes(std::span(data, size)));
  readWriteAndCompare<ZEBEncodable>(input);
  readWriteAndCompare<Album>(input);
  readWriteAndCompare<Track>(input);
  readWriteAndCompare<Ref<ZEBObjCEncodable>>(input);
  return 0;
}
