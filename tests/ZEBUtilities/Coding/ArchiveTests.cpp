#include <ZEBPlatform/Foundation.h>
#include <ZEBUtilities/Coding.h>

#include <cmath>
#include <map>
#include <regex>

#include "Support/Support.h"

namespace zeb::test {

enum class Mood : std::uint64_t { calm = 1, excited = UINT64_MAX };
enum class Color : std::uint8_t { red, green };
using AnyMood = ZEBRawValueEnumCodable<Mood>;
using AnyColor = ZEBRawValueEnumCodable<Color>;

/// An object with one field of any type.
template <class T>
struct Holder {
  static const char* encodableName() { return "Holder"; }
  explicit Holder(T held) : value(std::move(held)) {}
  explicit Holder(ZEBDecoder& decoder) : value(decoder.decodeObjectForKey<T>("v")) {}
  void encode(ZEBEncoder& encoder) const { encoder.encodeObject(value, "v"); }
  bool operator==(const Holder&) const = default;
  T value;
};

}  // namespace zeb::test

template <>
struct zeb::ZEBRawValueEnumTraits<zeb::test::Mood> {
  static const char* encodableName() { return "Mood"; }
  static constexpr std::array cases{test::Mood::calm, test::Mood::excited};
};
template <>
struct zeb::ZEBRawValueEnumTraits<zeb::test::Color> {
  static const char* encodableName() { return "Color"; }
  static constexpr std::array cases{std::pair{test::Color::red, "r"},
                                    std::pair{test::Color::green, "g"}};
};
template <>
struct std::hash<zeb::test::Holder<int>> {
  std::size_t operator()(const zeb::test::Holder<int>& holder) const {
    return static_cast<std::size_t>(holder.value);
  }
};

namespace zeb::test {

/// The same as a shared object. Its large stack frames soon fill a small stack.
struct Node : ZEBObjCEncodable {
  explicit Node(Value held) : value(std::move(held)) {}
  explicit Node(ZEBDecoder& decoder) {
    volatile char frame[4096] = {};
    value = decoder.decodeObjectForKey("v");
    frame[1] = frame[0];
  }
  NSString encodableName() const override { return "Node"; }
  void encodeWithEncoder(ZEBEncoder& encoder) const override {
    volatile char frame[4096] = {};
    encoder.encodeObject(value, "v");
    frame[1] = frame[0];
  }
  Value value;
};

/// An object that writes its fields with a function.
struct Writer {
  static const char* encodableName() { return ""; }
  void encode(ZEBEncoder& encoder) const { write(encoder); }
  std::function<void(ZEBEncoder&)> write;
};

static_assert(ZEBEncodableType<Writer> && !ZEBDecodableType<Writer> && !ZEBEncodableType<Mood>);
static_assert(ZEBDecodableType<AnyMood> && !std::is_constructible_v<ZEBEncodable, Mood>);

using Any = Holder<Value>;
using Registry = BasicDecodingBuilderRegistry;
using Spec = BuilderSpec;
NSData bytes(std::string_view document) { return NSData::dataWithBytes(document); }

template <class T>
std::string archived(const T& root) {
  return std::string(ZEBArchiver().archivedData(root).view());
}
/// The value in the document's `Holder`.
template <class T>
T unarchived(std::string_view document) {
  static const auto models = makeRef<Registry>(
      {Spec::decodableType<Any>(), Spec::decodableType<AnyMood>(), Spec::decodableType<AnyColor>(),
       Spec::buildFunction("Nil", [](ZEBDecoder&) { return ZEBEncodable(); }),
       Spec::objCBuildFunction("Node", [](ZEBDecoder& from) { return makeRef<Node>(from); })});
  const ZEBUnarchiver unarchiver(makeRef<Registry>({Spec::decodableType<Holder<T>>()}, models));
  return unarchiver.unarchivedRootObject<Holder<T>>(bytes(document)).value;
}

/// The text of a document written in short form: "@X" begins a tagged value of type X, "%X" begins
/// an object with that encodable name, and "<1>" is an archived double.
std::string expanded(std::string text) {
  text = std::regex_replace(text, std::regex("@(\\w+)"), R"({"type":"$1")");
  text = std::regex_replace(text, std::regex("%(\\w+)"), R"({"encodableName":"$1")");
  for (std::size_t at; (at = text.find('<')) != std::string::npos;) {
    const std::size_t end = text.find('>', at);
    const auto bits = std::bit_cast<std::uint64_t>(std::stod(text.substr(at + 1, end - at - 1)));
    text.replace(at, end - at + 1, R"({"type":"Double","bits":)" + std::to_string(bits) + "}");
  }
  return text;
}
/// The document of a `Holder` with this field.
std::string held(const std::string& field) { return expanded("%Holder,\"c_v\":" + field + "}"); }

/// The error that is thrown: "NSError <code>", or an unarchiver error's case, payload and path.
std::string errorOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const NSError& error) {
    return "NSError " + std::to_string(error.code());
  } catch (const ZEBUnarchiverError& error) {
    return error.what();
  }
  return "";
}
template <class T = Value>
std::string readingError(std::string_view document) {
  return errorOf([&] { unarchived<T>(document); });
}

const NSDate date = NSDate::dateWithTimeIntervalSince1970(0.5);

TEST(Archive, EveryKindIsWrittenAndReadBack) {
  const CLLocation::Fields fields{{1, 2}, -HUGE_VAL, 4, 5, 6, 7, date};
  const NSDictionary dictionary{{1, NSArray{"a"}}, {7u, 0.5}, {NSString(u"\xDC00"), true}};
  const std::pair<Value, const char*> rows[] = {
      {UINT64_MAX, "18446744073709551615"},
      {0.1, R"(@Double,"bits":4591870180066957722})"},
      {std::bit_cast<double>(0x7FF0'0000'0000'0001), R"(@Double,"bits":9218868437227405313})"},
      {1.5f, R"(@Float,"bits":1069547520})"},
      {std::bit_cast<float>(0x7F800001), R"(@Float,"bits":2139095041})"},
      {"a/é\n", R"("a\/é\n")"},
      {NSString(u"\xD800x"), R"(@UTF16String,"bytes":"\/\/4A2HgA"})"},
      {bytes("\xFF\xEF!!"), R"(@Data,"bytes":"\/+8hIQ=="})"},
      {date, R"(@Date,"interval":<0.5>})"},
      {boxed(CGRect{{1, 2}, {3, -0.0}}), R"(@CGRect,"x":<1>,"y":<2>,"width":<3>,"height":<-0.0>})"},
      {boxed(CGPoint{1, 2}), R"(@CGPoint,"x":<1>,"y":<2>})"},
      {boxed(CGSize{1, 2}), R"(@CGSize,"width":<1>,"height":<2>})"},
      {boxed(NSRange{5, SIZE_MAX}), R"(@NSRange,"location":5,"length":18446744073709551615})"},
      {makeRef<CLLocation>(fields),
       R"(@CLLocation,"lat":<1>,"long":<2>,"interval":<0.5>,"altitude":<-inf>,)"
       R"("horizontalAccuracy":<4>,"verticalAccuracy":<5>,"course":<6>,"speed":<7>})"},
      {NSArray::array(), R"(@Array,"arrayValues":[]})"},
      {NSDictionary::dictionary(), R"(@Dictionary,"keys":[],"values":[]})"},
      {dictionary, R"(@Dictionary,"keys":[1,7,@UTF16String,"bytes":"\/\/4A3A=="}],)"
                   R"("values":[@Array,"arrayValues":["a"]},<0.5>,true]})"},
      {makeRef<Node>(makeRef<Node>(1)), R"(%Node,"c_v":%Node,"c_v":1}})"},
      {ZEBEncodable(AnyMood(Mood::excited)).value(),
       R"(%Mood,"c_rawValue":18446744073709551615})"}};
  for (const auto& [value, text] : rows) {
    const std::string document = archived(Any(value));
    EXPECT_EQ(document, held(text));
    const Value back = unarchived<Value>(document);
    EXPECT_EQ(archived(Any(back)), document) << "not the same bits";
    EXPECT_TRUE(value.object<Node>() || std::isnan(value.doubleValue()) || back == value) << back;
  }
}

TEST(Archive, StaticTypesComeBack) {
  const auto expectBack = []<class... T>(const T&... values) {
    EXPECT_TRUE(((unarchived<T>(archived(Holder<T>(values))) == values) && ...));
  };
  expectBack(true, std::int8_t{-8}, 0xFFFFFFFFu, INT64_MIN, UINT64_MAX, -HUGE_VALF, 0.1, date);
  expectBack(std::string("é"), NSNumber(1.5f), CGRect{{1, 2}, {3, 4}}, AnyMood(Mood::calm));
  expectBack(std::vector<std::vector<double>>{{1, -0.5}, {}}, std::vector<bool>{true, false});
  expectBack(
      std::map<std::string, std::vector<AnyColor>>{{"a", {AnyColor(Color::red)}}, {"b", {}}});
  using Sizes = std::optional<std::vector<std::map<std::string, CGSize>>>;
  expectBack(Sizes({{{"s", {1, 2}}}, {}}), Sizes());
  const auto any = unarchived<ZEBEncodable>(archived(Holder(ZEBEncodable(AnyMood(Mood::calm)))));
  EXPECT_TRUE(any.as<AnyMood>() && !any.as<AnyColor>());
}

TEST(Archive, FieldsAreStoredUnderTheirOwnKeys) {
  const NSString odd(u"\xD800");
  const Writer root{[&](ZEBEncoder& encoder) {
    encoder.encodeString("s", "string");
    encoder.encodeNumber(2u, "number");
    encoder.encodeBool(true, "type");
    encoder.encodeInt(-3, "encodableName");
    encoder.encodeInt64(5, odd);
    encoder.encodeString(nullptr, "number");
    encoder.encodeObject(std::optional<int>(), "number");
    encoder.encodeObject(Writer{[](ZEBEncoder& inner) { inner.encodeInt32(1, "number"); }}, "o");
    encoder.encodeObject("a longer one", "string");
    encoder.encodeInt(6, "type");
    const Writer failing{[](ZEBEncoder& inner) {
      inner.encodeInt(1, "lost");
      throw std::runtime_error("left out");
    }};
    EXPECT_THROW(encoder.encodeObject(failing, "child"), std::runtime_error);
    const AnyColor unlisted(static_cast<Color>(2));
    EXPECT_EQ(raisedName([&] { encoder.encodeObject(unlisted, "color"); }),
              NSInvalidArgumentException);
    const std::vector<NSString> texts{"a", nullptr};
    EXPECT_EQ(raisedName([&] { encoder.encodeObject(texts, "texts"); }),
              NSInvalidArgumentException);
  }};
  EXPECT_EQ(archived(root),
            R"({"encodableName":"","c_string":"a longer one","c_number":2,"c_type":6,)"
            R"("c_encodableName":-3,"c_\ud800":5,"c_o":{"encodableName":"","c_number":1}})");
  const Writer large{[](ZEBEncoder& encoder) {
    for (int i = 0; i < 400'000; ++i) encoder.encodeInt(i, StringKey(std::to_string(i % 200'000)));
  }};
  std::string text = R"({"encodableName":"")";
  for (int i = 0; i < 200'000; ++i) {
    text += ",\"c_" + std::to_string(i) + "\":" + std::to_string(200'000 + i);
  }
  EXPECT_TRUE(archived(large) == text + "}") << "the later value, at the first one's place";
  const auto reader = Spec::buildFunction("", [&](ZEBDecoder& decoder) -> ZEBEncodable {
    EXPECT_FALSE(decoder.containsValueForKey(NSString(u"\xD801")));
    return Any(decoder.decodeObjectForKey(odd));
  });
  const ZEBUnarchiver unarchiver(makeRef<Registry>({reader}));
  EXPECT_EQ(unarchiver.unarchivedRootObject<Any>(bytes(archived(root))).value, Value(5));
  for (const ZEBEncodable& noObject : {ZEBEncodable(5), ZEBEncodable(0.5), ZEBEncodable()}) {
    EXPECT_EQ(archived(noObject), "{}");
  }
}

TEST(Archive, TooDeepNestingIsAnError) {
  const auto errorAfterAll = [](const Value& content) {
    return errorOf([&] { unarchived<Value>(archived(Any(content))); });
  };
  Value objects = 1;
  for (int i = 0; i < 511; ++i) objects = makeRef<Node>(objects);
  const std::string deepest = archived(Any(objects));
  EXPECT_EQ(readingError(deepest), "");
  EXPECT_EQ(errorAfterAll(makeRef<Node>(objects)), "NSError 3852");
  EXPECT_EQ(readingError(held(deepest)), "NSError 3840");
  const auto cycle = makeRef<Node>(nullptr);
  cycle->value = NSArray{cycle};
  EXPECT_EQ(errorAfterAll(cycle), "NSError 3852");
  cycle->value = nullptr;
  runOnSmallStack([&] {
    EXPECT_EQ(errorAfterAll(objects), "NSError 3852");
    const std::string error = readingError(deepest);
    EXPECT_TRUE(error.starts_with(R"(unexpectedContent(key: "v") at root.v.v.)")) << error;
  });
}

TEST(ArchiveDeathTest, ProgrammingErrorsStopTheProcess) {
  const auto expectStop = [](const std::string& message, const std::function<void()>& work) {
    EXPECT_EXIT(work(), testing::KilledBySignal(SIGABRT), "^" + message + "\n$");
  };
  const std::string kind =
      "Object must be either Encodable, ZEBObjCEncodable, Array, or Dictionary: ";
  const std::string key = "Dictionary keys must be either Int, Int64, or String: ";
  const std::pair<std::string, Value> rows[] = {{kind + "<null>", NSNull::null()},
                                                {kind + "\\{\\(\n    1\n\\)\\}", NSArray{NSSet{1}}},
                                                {key + "1.5", NSDictionary{{1.5, 1}}},
                                                {key + "1", NSDictionary{{true, 1}}}};
  for (const auto& [message, value] : rows) expectStop(message, [&] { archived(Any(value)); });
  const Writer direct{[](ZEBEncoder& encoder) { ZEBEncodable(5).encode(encoder); }};
  expectStop("Encoders should directly encode primitives", [&] { archived(direct); });
  const ZEBUnarchiver unarchiver(makeRef<Registry>({Spec::decodableType<double>()}));
  expectStop("Encoders should directly encode and decode primitives",
             [&] { return unarchiver.unarchivedRootObject<Value>(bytes(expanded("%Double}"))); });
}

TEST(Unarchiver, MalformedDocumentsFailWithCasePayloadAndPath) {
  using Rows = std::vector<std::pair<std::string, std::vector<std::string>>>;
  const Rows wholeDocuments = {
      {"NSError 3840", {"null", R"("text")", ""}},
      {"unexpectedRootDataType", {"[]"}},
      {"missingRootObject", {R"(@Array,"arrayValues":[]})", R"(%Node,"c_v":1})"}},
      {R"(missingEncodableName(key: "root") at root)", {"{}", R"({"type":5})"}},
      {R"(missingDecodingBuilder(encodableName: "Nobody") at root)", {"%Nobody}"}},
      {R"(unexpectedDataType(key: "encodableName") at root)", {R"({"encodableName":5})"}},
      {R"(missingRequiredData(key: "v") at root)", {"%Holder}", R"(%Holder,"v":1})"}}};
  for (const auto& [error, documents] : wholeDocuments) {
    for (const std::string& document : documents) {
      EXPECT_EQ(readingError(expanded(document)), error) << document;
    }
  }
  const Rows fieldsOfHolder = {
      {R"(unexpectedContent(key: "v") at root)", {"null", "[1]"}},
      {R"(missingEncodableName(key: "v") at root.v)", {"{}"}},
      {R"(unexpectedContent(key: "Blob") at root.v)", {"@Blob}"}},
      {R"(unexpectedDataType(key: "bits") at root.v)", {R"(@Double,"bits":"1"})"}},
      {R"(unexpectedContent(key: "bits") at root.v)",
       {R"(@Double,"bits":-1})", R"(@Double,"bits":1.5})", R"(@Double,"bits":true})",
        R"(@Double,"bits":null})", R"(@Float,"bits":4294967296})"}},
      {R"(unexpectedContent(key: "bytes") at root.v)",
       {R"(@Data,"bytes":"AA"})", R"(@UTF16String,"bytes":"AA=="})"}},
      {R"(missingRequiredData(key: "bits") at root.v.interval)", {R"(@Date,"interval":@Double}})"}},
      {R"(missingRequiredData(key: "height") at root.v)",
       {R"(@CGRect,"x":<1>,"y":<1>,"width":<1>})", R"(@CGSize,"width":<1>})"}},
      {R"(unexpectedContent(key: "location") at root.v)",
       {R"(@NSRange,"location":-1,"length":0})"}},
      {R"(unexpectedContent(key: "v") at root.v[1])", {R"(@Array,"arrayValues":[1,%Nil}]})"}},
      {R"(missingEncodableName(key: "v") at root.v[1])", {R"(@Array,"arrayValues":[1,{}]})"}},
      {R"(missingRequiredData(key: "values") at root.v)", {R"(@Dictionary,"keys":[]})"}},
      {R"(unexpectedContent(key: "v") at root.v)",
       {R"(@Array,"arrayValues":[1,null]})", R"(@Dictionary,"keys":[1],"values":[]})",
        R"(@Dictionary,"keys":[true],"values":[1]})", R"(@Dictionary,"keys":[<1>],"values":[1]})"}},
      {R"(missingDecodingBuilder(encodableName: "X") at root.v[0].v)",
       {R"(@Array,"arrayValues":[%Node,"c_v":%X}}]})"}},
      {R"(missingRequiredData(key: "rawValue") at root.v)", {"%Mood}", R"(%Color,"rawValue":1})"}},
      {R"(unexpectedContent(key: "rawValue") at root.v)",
       {R"(%Mood,"c_rawValue":2})", R"(%Mood,"c_rawValue":-1})", R"(%Color,"c_rawValue":"b"})"}}};
  for (const auto& [error, fields] : fieldsOfHolder) {
    for (const std::string& field : fields) EXPECT_EQ(readingError(held(field)), error) << field;
  }
  for (const std::string field : {"7", R"(@Array,"arrayValues":[1,"2"]})"}) {
    EXPECT_EQ(readingError<std::vector<int>>(held(field)),
              R"(unexpectedDataType(key: "v") at root)");
  }
}

/// Reads a field with this text, an absent field, and fields of other types, with and without a
/// default.
template <class T, class Default>
void expectReads(const char* text, T value, T absent, T (ZEBDecoder::*require)(const StringKey&),
                 T (ZEBDecoder::*readOr)(const StringKey&, Default)) {
  T required{};
  T defaulted{};
  const auto spec = Spec::buildFunction("Holder", [&](ZEBDecoder& decoder) -> ZEBEncodable {
    defaulted = (decoder.*readOr)("v", absent);
    required = (decoder.*require)("v");
    return Any(1);
  });
  const ZEBUnarchiver unarchiver(makeRef<Registry>({spec}));
  const auto error = [&](const std::string& document) {
    return errorOf([&] { return unarchiver.unarchivedRootObject<Any>(bytes(document)); });
  };
  EXPECT_TRUE(error(held(text)).empty() && required == value && defaulted == value) << text;
  EXPECT_EQ(error(expanded("%Holder}")), R"(missingRequiredData(key: "v") at root)");
  EXPECT_EQ(defaulted, absent);
  for (const char* other : {"null", "[]", R"(@Data,"bytes":""})"}) {
    EXPECT_EQ(error(held(other)), R"(unexpectedDataType(key: "v") at root)") << other;
  }
}

TEST(Unarchiver, TypedReadsRequireOrDefault) {
  using D = ZEBDecoder;
  expectReads<NSString>(R"("s")", "s", "d", &D::decodeStringForKey, &D::decodeStringForKey);
  expectReads("2", true, false, &D::decodeBoolForKey, &D::decodeBoolForKey);
  expectReads("-9223372036854775808", INT64_MIN, 9L, &D::decodeIntForKey, &D::decodeIntForKey);
  expectReads("4294967301", 5, 9, &D::decodeInt32ForKey, &D::decodeInt32ForKey);
  expectReads("18446744073709551615", -1L, 9L, &D::decodeInt64ForKey, &D::decodeInt64ForKey);
  expectReads("<1.5>", 1.5f, 9.0f, &D::decodeFloatForKey, &D::decodeFloatForKey);
  expectReads("3", 3.0, 9.0, &D::decodeDoubleForKey, &D::decodeDoubleForKey);
  const auto rect = R"(@CGRect,"x":1,"y":<2>,"width":3,"height":4})";
  expectReads(rect, CGRect{{1, 2}, {3, 4}}, {}, &D::decodeCGRectForKey, &D::decodeCGRectForKey);
  const auto range = R"(@NSRange,"location":1,"length":2})";
  expectReads(range, NSRange{1, 2}, {}, &D::decodeRangeForKey, &D::decodeRangeForKey);
}

TEST(Unarchiver, BrokenDocumentsFailAndDocumentsAreNotKept) {
  const Value everything = NSDictionary{
      {"a key", NSArray{makeRef<Node>(0.1), NSString(u"\xD800"), bytes("\1\2"), "a longer text"}},
      {1, NSArray{boxed(CGRect()), boxed(NSRange()), makeRef<CLLocation>(CLLocation::Fields())}},
      {2, NSArray{ZEBEncodable(AnyMood(Mood::calm)).value(), 1.5f, true}}};
  const std::string document = archived(Any(everything));
  for (std::size_t i = 0; i < document.size(); ++i) {
    EXPECT_EQ(readingError(std::string_view(document).substr(0, i)), "NSError 3840");
    for (const char other : {'"', '0', '}', 'n', '\xFF'}) {
      std::string broken = document;
      broken[i] = other;
      readingError(broken);  // throws what else comes
    }
  }
  const Value text = NSArray(unarchived<NSDictionary>(document)["a key"])[3];
  EXPECT_FALSE(text.storage()->flags & detail::StorageInArena) << "keeps the document's memory";
}

Ref<DecodingBuilder> builderOf(const char* text) {
  return makeRef<BasicDecodingBuilder>("own name",
                                       [text](ZEBDecoder&) -> ZEBEncodable { return Any(text); });
}

TEST(Encodable, ObjectsOfContentAreHashedByIt) {
  const Value one = ZEBEncodable(Holder(1)).value(), twin = ZEBEncodable(Holder(1)).value();
  const Value two = ZEBEncodable(Holder(2)).value();
  EXPECT_TRUE(one == twin && one.hash() == twin.hash() && one != two && one.hash() != two.hash());
}

TEST(Registry, TheLaterEntryAndTheFrontRegistryWin) {
  struct Other : DecodingBuilderRegistry {
    Ref<DecodingBuilder> decodingBuilder(const NSString&) const override { return builderOf("c"); }
  };
  const auto hidden = Spec::builder("a", builderOf("hidden"));
  const auto middle =
      makeRef<Registry>({hidden, Spec::builder("b", builderOf("b"))}, makeRef<Other>());
  const auto front = makeRef<Registry>({hidden, Spec::builder("a", builderOf("later"))}, middle);
  std::string built;
  for (const char* name : {"%a}", "%b}", "%c}"}) {
    const NSData document = bytes(expanded(name));
    built += archived(ZEBUnarchiver(front).unarchivedRootObject<ZEBEncodable>(document));
  }
  EXPECT_EQ(built, held(R"("later")") + held(R"("b")") + held(R"("c")"));
  EXPECT_EQ(raisedName([] { return Spec::buildFunction("a", nullptr); }),
            NSInvalidArgumentException);
  EXPECT_EQ(raisedName([] { return Spec::objCBuildFunction("a", nullptr); }),
            NSInvalidArgumentException);
  for (const auto& registry : {Ref<Registry>(), makeRef<Registry>({Spec::builder("a", nullptr)})}) {
    const auto unarchive = [&](const NSData& data) {
      return errorOf([&] { return ZEBUnarchiver(registry).unarchivedRootObject<Value>(data); });
    };
    EXPECT_EQ(unarchive(bytes(expanded("%a}"))),
              R"(missingDecodingBuilder(encodableName: "a") at root)");
    EXPECT_EQ(unarchive(nullptr), "NSError 3840");
  }
}

TEST(Registry, ChainsMayHaveAnyLength) {
  auto chain = makeRef<Registry>({Spec::builder("last", builderOf("last"))});
  for (int i = 0; i < 100000; ++i) chain = makeRef<Registry>({Spec::builder("b", nullptr)}, chain);
  runOnSmallStack([&] {
    EXPECT_TRUE(chain->decodingBuilder("last") && !chain->decodingBuilder("none"));
    chain = nullptr;
  });
}

}  // namespace zeb::test
