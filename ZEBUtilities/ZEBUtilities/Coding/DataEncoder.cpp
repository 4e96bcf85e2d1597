#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/detail/StaticText.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Json/detail/JsonWriter.h>
#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBPlatform/Linux/detail/Stack.h>
#include <ZEBPlatform/Memory/Overloaded.h>
#include <ZEBUtilities/Coding/ArchiveFormatPrivate.h>
#include <ZEBUtilities/Coding/ArchiveLimitsPrivate.h>
#include <ZEBUtilities/Coding/DataEncoderPrivate.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>
#include <string>
#include <typeinfo>
#include <utility>
#include <variant>

namespace zeb::detail {

namespace {

[[noreturn]] void stopFor(const char* message, const Value& value) {
  fatal(std::string(message) + " " + value.description().utf8());
}

[[noreturn]] void stopForUnsupported(const Value& value) {
  stopFor("Object must be either Encodable, ZEBObjCEncodable, Array, or Dictionary:", value);
}

bool mayBeKey(const Value& key) {
  return key.isString() || (key.isNumber() && NSNumber(key).isSigned64());
}

/// The text with a byte-order mark, in the machine's byte order.
NSData utf16Data(const StringStorage& string) {
  const std::u16string units =
      u'\uFEFF' + std::u16string(std::u16string_view(string.units(), string.length));
  return NSData::dataWithBytes(std::as_bytes(std::span(units)));
}

bool isWellFormed(const StringStorage& wide) noexcept {
  const std::u16string_view units(wide.units(), wide.length);
  for (std::size_t index = 0; index < units.size(); ++index) {
    if (!isSurrogate(units[index])) continue;
    const bool isPair =
        units[index] < 0xDC00 && index + 1 < units.size() && (units[index + 1] & 0xFC00) == 0xDC00;
    if (!isPair) return false;
    ++index;
  }
  return true;
}

}  // namespace

/// Counts levels of JSON as long as it lives. Throws when the document gets too deep, or when too
/// little of the stack remains.
class DataEncoder::Nesting {
 public:
  Nesting(DataEncoder& encoder, std::size_t levels) : encoder_(encoder), levels_(levels) {
    const bool fits = encoder_.depth_ + levels_ <= maxArchiveNesting;
    if (!fits || remainingStack() < minRemainingStack) throw nestingError();
    encoder_.depth_ += levels_;
  }
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;
  ~Nesting() { encoder_.depth_ -= levels_; }

 private:
  DataEncoder& encoder_;
  std::size_t levels_;
};

NSData DataEncoder::encodeRoot(const Value& root) {
  const NSObject* object = root.objectPointer();
  // A primitive is no error, but has no object dictionary that could be the document.
  if (!object || !writeIfObject(*object)) text_.put("{}");
  return text_.finish();
}

/// Removes a field whose value could not be written, so that the document is still well-formed when
/// an object catches the error and continues.
class DataEncoder::FieldGuard {
 public:
  explicit FieldGuard(DataEncoder& encoder) noexcept
      : encoder_(encoder),
        textSize_(encoder.text_.size()),
        fieldCount_(encoder.fields_.size()),
        innermostObject_(encoder.innermostObject_) {}
  FieldGuard(const FieldGuard&) = delete;
  FieldGuard& operator=(const FieldGuard&) = delete;
  ~FieldGuard() {
    if (isWritten_) return;
    encoder_.text_.output().truncate(textSize_);
    encoder_.fields_.resize(fieldCount_);
    encoder_.innermostObject_ = innermostObject_;
  }

  void fieldIsWritten() noexcept { isWritten_ = true; }

 private:
  DataEncoder& encoder_;
  const std::size_t textSize_;
  const std::size_t fieldCount_;
  OpenObject* const innermostObject_;
  bool isWritten_ = false;
};

template <class WriteValue>
void DataEncoder::writeField(const StringKey& key, const WriteValue& writeValue) {
  FieldGuard guard(*this);
  Field field{key.hash(), 0, text_.size() + 1, 0, 0};
  writeKey(key);
  field.valueStart = text_.size();
  field.keyLength = static_cast<std::uint32_t>(field.valueStart - field.keyStart);
  writeValue();
  field.valueEnd = text_.size();
  finishField(field);
  guard.fieldIsWritten();
}

void DataEncoder::writeKey(const StringKey& key) {
  KnownKey& known = knownKeys_[key.hash() % knownKeys_.size()];
  const std::string_view own = key.utf8();
  const bool isKnown = known.hash == key.hash() && known.own().size() == own.size() &&
                       equalBytes(known.own().data(), own.data(), own.size());
  if (isKnown && !own.empty()) {
    DataBuilder& output = text_.output();
    output.require(known.text.size());
    std::memcpy(output.cursor(), known.text.data(), known.text.size());
    output.setCursor(output.cursor() + known.length);
    return;
  }
  const std::size_t start = text_.size();
  writeUnknownKey(key);
  const std::string_view text = text_.output().written().substr(start);
  const bool isUnchanged = text.size() == own.size() + KnownKey::addedLength;
  if (text.size() <= known.text.size() && isUnchanged) {
    known.hash = key.hash();
    known.length = text.size();
    std::ranges::copy(text, known.text.begin());
  }
}

[[gnu::noinline]] void DataEncoder::writeUnknownKey(const StringKey& key) {
  text_.put(keyOpening);
  const std::string_view utf8 = key.utf8();
  if (!utf8.empty() && isASCII(utf8)) {
    text_.writeASCII(utf8);
  } else if (const NSString string = key.string(); !string.isNil()) {
    text_.writeContent(string.text());
  }
  text_.put(keyClosing);
}

void DataEncoder::finishField(const Field& field) {
  // Up to this number, a linear search is faster than a dictionary.
  constexpr std::size_t maxSearchedFields = 32;
  OpenObject& object = *innermostObject_;
  const std::size_t count = fields_.size();
  if (count - object.firstField > maxSearchedFields) return finishFieldOfLargeObject(field);
  const std::uint64_t mark = std::uint64_t{1} << (field.keyHash % 64);
  if (object.keyMarks & mark) {
    for (std::size_t index = object.firstField; index < count; ++index) {
      Field& earlier = fields_[index];
      if (earlier.keyHash == field.keyHash && keyText(earlier) == keyText(field)) {
        return replaceValue(earlier, field);
      }
    }
  }
  object.keyMarks |= mark;
  fields_.push_back(field);
}

[[gnu::noinline]] void DataEncoder::finishFieldOfLargeObject(const Field& field) {
  OpenObject& object = *innermostObject_;
  if (object.indexes.isNil()) {
    object.indexes = NSMutableDictionary();
    for (std::size_t index = object.firstField; index < fields_.size(); ++index) {
      object.indexes.setObject(index, NSString(keyText(fields_[index])));
    }
  }
  if (const Value* index = object.indexes.find(StringKey(keyText(field)))) {
    return replaceValue(fields_[static_cast<std::size_t>(index->longLongValue())], field);
  }
  object.indexes.setObject(fields_.size(), NSString(keyText(field)));
  fields_.push_back(field);
}

void DataEncoder::replaceValue(Field& earlier, const Field& later) noexcept {
  earlier.valueStart = later.valueStart;
  earlier.valueEnd = later.valueEnd;
  innermostObject_->hasReplacedValues = true;
}

std::string_view DataEncoder::keyText(const Field& field) noexcept {
  return text_.output().written().substr(field.keyStart, field.keyLength);
}

/// Writes the innermost object's fields again, each key at its first position with its last value,
/// as dictionaries keep them.
void DataEncoder::removeReplacedValues() {
  const std::size_t firstField = innermostObject_->firstField;
  const std::string_view text = text_.output().written();
  std::string fields;
  for (std::size_t index = firstField; index < fields_.size(); ++index) {
    const Field& field = fields_[index];
    fields += ',';
    fields += keyText(field);
    fields += text.substr(field.valueStart, field.valueEnd - field.valueStart);
  }
  text_.output().truncate(fields_[firstField].keyStart - 1);
  text_.put(fields);
}

void DataEncoder::encodeObject(const Value& object, const StringKey& forKey) {
  if (!object.isNil()) writeField(forKey, [&] { write(object); });
}
bool DataEncoder::encodeParts(FunctionView<void(ValueSink&)> write, const StringKey& forKey) {
  writeField(forKey, [&] { write(*this); });
  return true;
}
void DataEncoder::encodeString(const NSString& string, const StringKey& forKey) {
  if (!string.isNil()) writeField(forKey, [&] { writeString(string.text()); });
}
void DataEncoder::encodeNumber(const NSNumber& number, const StringKey& forKey) {
  if (!number.isNil()) writeField(forKey, [&] { writeNumber(number); });
}
void DataEncoder::encodeBool(bool boolean, const StringKey& forKey) {
  writeField(forKey, [&] { boolean ? text_.put("true") : text_.put("false"); });
}
void DataEncoder::encodeInt(std::int64_t integer, const StringKey& forKey) {
  encodeInt64(integer, forKey);
}
void DataEncoder::encodeInt32(std::int32_t integer, const StringKey& forKey) {
  encodeInt64(integer, forKey);
}
void DataEncoder::encodeInt64(std::int64_t integer, const StringKey& forKey) {
  writeField(forKey, [&] { text_.writeInteger(integer); });
}
void DataEncoder::encodeFloat(float number, const StringKey& forKey) {
  writeField(forKey, [&] { writeFloat(number); });
}
void DataEncoder::encodeDouble(double number, const StringKey& forKey) {
  writeField(forKey, [&] { writeDouble(number); });
}
void DataEncoder::encodeCGRect(const CGRect& rect, const StringKey& forKey) {
  writeField(forKey, [&] { writeRect(rect); });
}
void DataEncoder::encodeCGPoint(const CGPoint& point, const StringKey& forKey) {
  writeField(forKey, [&] { writePoint(point); });
}
void DataEncoder::encodeCGSize(const CGSize& size, const StringKey& forKey) {
  writeField(forKey, [&] { writeSize(size); });
}
void DataEncoder::encodeRange(const NSRange& range, const StringKey& forKey) {
  writeField(forKey, [&] { writeRange(range); });
}

void DataEncoder::write(const Value& value) {
  if (value.isNumber()) return writeNumber(NSNumber(value));
  switch (value.kind()) {
    case ValueKind::String:
      return writeString(*value.storageAs<StringStorage>());
    case ValueKind::Data:
      return writeBytes(archive::typeData, NSData(value));
    case ValueKind::Date: {
      const Nesting nesting(*this, 1);
      openTagged(archive::typeDate);
      component(archive::interval, NSDate(value).timeIntervalSince1970());
      return text_.put('}');
    }
    case ValueKind::Array: {
      const auto& list = *value.storageAs<ArrayStorage>();
      return writeList([&] {
        for (std::size_t index = 0; index < list.count; ++index) {
          write(list.values()[index]);
          endElement();
        }
      });
    }
    case ValueKind::Dictionary:
      return writeDictionary(NSDictionary(value));
    case ValueKind::Object:
      break;
    default:
      stopForUnsupported(value);
  }
  const NSObject& object = *value.objectPointer();
  if (typeid(object) == typeid(NSValue)) {
    return std::visit(Overloaded{
                          [&](const CGRect& rect) { writeRect(rect); },
                          [&](const CGPoint& point) { writePoint(point); },
                          [&](const CGSize& size) { writeSize(size); },
                          [&](const NSRange& range) { writeRange(range); },
                          [&](const CGAffineTransform&) { stopForUnsupported(value); },
                      },
                      static_cast<const NSValue&>(object).content());
  }
  if (typeid(object) == typeid(CLLocation)) {
    return writeLocation(static_cast<const CLLocation&>(object));
  }
  if (!writeIfObject(object)) stopForUnsupported(value);
}

void DataEncoder::value(const Value& value) {
  if (value.isNil()) raiseInvalidArgument("an array can't hold nil");
  write(value);
}

void DataEncoder::array(FunctionView<void()> writeElements) { writeList(writeElements); }

bool DataEncoder::writeIfObject(const NSObject& object) {
  if (isBox(object)) {
    this->object(static_cast<const EncodableBox&>(object));
  } else if (const auto* legacy = dynamic_cast<const ZEBObjCEncodable*>(&object)) {
    writeFields(legacy->encodableName(), [&] { legacy->encodeWithEncoder(*this); });
  } else {
    return false;
  }
  return true;
}

bool DataEncoder::isBox(const NSObject& object) {
  const std::type_info& type = typeid(object);
  const auto address = reinterpret_cast<std::uintptr_t>(&type);
  const std::type_info*& known = boxTypes_[address / sizeof(void*) % boxTypes_.size()];
  if (known == &type) return true;
  if (!dynamic_cast<const EncodableBox*>(&object)) return false;
  known = &type;
  return true;
}

void DataEncoder::object(const EncodableBox& object) {
  const std::string_view name = object.encodableNameText();
  const auto encodeFields = [&] { object.encode(*this); };
  if (!name.data() || !isASCII(name)) return writeFields(object.encodableName(), encodeFields);
  writeNamed(
      [&] {
        text_.put('"');
        text_.writeASCII(name);
        text_.put('"');
      },
      encodeFields);
}

template <class EncodeFields>
void DataEncoder::writeFields(const NSString& encodableName, const EncodeFields& encodeFields) {
  if (encodableName.isNil()) raiseInvalidArgument("An object's encodable name can't be nil");
  writeNamed([&] { text_.writeString(encodableName.text()); }, encodeFields);
}

/// Writes an object's dictionary.
template <class WriteName, class EncodeFields>
void DataEncoder::writeNamed(const WriteName& writeName, const EncodeFields& encodeFields) {
  const Nesting nesting(*this, 1);
  OpenObject object{.firstField = fields_.size()};
  OpenObject* const outerObject = std::exchange(innermostObject_, &object);
  static constexpr auto opening = joinedText("{\"", archive::encodableName, "\":");
  text_.put(opening);
  writeName();
  encodeFields();
  if (object.hasReplacedValues) removeReplacedValues();
  text_.put('}');
  fields_.resize(object.firstField);
  innermostObject_ = outerObject;
}

template <class WriteElements>
void DataEncoder::writeList(const WriteElements& writeElements) {
  const Nesting nesting(*this, 2);
  static constexpr auto opening = joinedText("{\"", archive::type, "\":\"", archive::typeArray,
                                             "\",\"", archive::arrayValues, "\":[");
  text_.put(opening);
  writeElements();
  if (text_.output().last() == ',') text_.output().truncate(text_.size() - 1);
  text_.put("]}");
}

void DataEncoder::writeDictionary(const NSDictionary& dictionary) {
  const Nesting nesting(*this, 2);
  openTagged(archive::typeDictionary);
  static constexpr auto keys = joinedText(",\"", archive::keys, "\":[");
  text_.put(keys);
  const char* separator = "";
  for (const auto& [key, value] : dictionary) {
    if (!mayBeKey(key)) stopFor("Dictionary keys must be either Int, Int64, or String:", key);
    text_.put(std::exchange(separator, ","));
    write(key);
  }
  static constexpr auto values = joinedText("],\"", archive::values, "\":[");
  text_.put(values);
  separator = "";
  for (const auto& [key, value] : dictionary) {
    text_.put(std::exchange(separator, ","));
    write(value);
  }
  text_.put("]}");
}

void DataEncoder::writeNumber(const NSNumber& number) {
  switch (number.kind()) {
    case ValueKind::Float:
      return writeFloat(number.floatValue());
    case ValueKind::Double:
      return writeDouble(number.doubleValue());
    default:
      text_.writeScalar(number, ' ');
      return text_.output().truncate(text_.size() - 1);
  }
}

void DataEncoder::writeString(const StringStorage& string) {
  if (string.isWide() && !isWellFormed(string)) {
    return writeBytes(archive::typeUTF16String, utf16Data(string));
  }
  // The comma after it is not known to follow.
  text_.writeString(string, ',');
  text_.output().truncate(text_.size() - 1);
}

/// For tagged values that contain no values of the user.
void DataEncoder::requireLevel() const {
  if (depth_ == maxArchiveNesting) throw nestingError();
}

void DataEncoder::writeFloat(float number) {
  requireLevel();
  openTagged(archive::typeFloat);
  component(archive::bits, std::uint64_t{std::bit_cast<std::uint32_t>(number)});
  text_.put('}');
}

void DataEncoder::writeDouble(double number) {
  requireLevel();
  static constexpr auto opening =
      joinedText("{\"", archive::type, "\":\"", archive::typeDouble, "\",\"", archive::bits, "\":");
  text_.put(opening);
  text_.writeUnsigned(std::bit_cast<std::uint64_t>(number));
  text_.put('}');
}

void DataEncoder::writeBytes(std::string_view type, const NSData& bytes) {
  const Nesting nesting(*this, 1);
  openTagged(type);
  static constexpr auto content = joinedText(",\"", archive::bytes, "\":");
  text_.put(content);
  text_.writeString(bytes.base64EncodedString().text());
  text_.put('}');
}

void DataEncoder::writeRect(const CGRect& rect) {
  const Nesting nesting(*this, 1);
  openTagged(archive::typeCGRect);
  component(archive::x, rect.origin.x);
  component(archive::y, rect.origin.y);
  component(archive::width, rect.size.width);
  component(archive::height, rect.size.height);
  text_.put('}');
}

void DataEncoder::writePoint(const CGPoint& point) {
  const Nesting nesting(*this, 1);
  openTagged(archive::typeCGPoint);
  component(archive::x, point.x);
  component(archive::y, point.y);
  text_.put('}');
}

void DataEncoder::writeSize(const CGSize& size) {
  const Nesting nesting(*this, 1);
  openTagged(archive::typeCGSize);
  component(archive::width, size.width);
  component(archive::height, size.height);
  text_.put('}');
}

void DataEncoder::writeRange(const NSRange& range) {
  const Nesting nesting(*this, 1);
  openTagged(archive::typeNSRange);
  component(archive::location, std::uint64_t{range.location});
  component(archive::length, std::uint64_t{range.length});
  text_.put('}');
}

void DataEncoder::writeLocation(const CLLocation& location) {
  const Nesting nesting(*this, 1);
  openTagged(archive::typeCLLocation);
  component(archive::latitude, location.coordinate().latitude);
  component(archive::longitude, location.coordinate().longitude);
  component(archive::interval, location.timestamp().timeIntervalSince1970());
  component(archive::altitude, location.altitude());
  component(archive::horizontalAccuracy, location.horizontalAccuracy());
  component(archive::verticalAccuracy, location.verticalAccuracy());
  component(archive::course, location.course());
  component(archive::speed, location.speed());
  text_.put('}');
}

void DataEncoder::openTagged(std::string_view type) {
  static constexpr auto opening = joinedText("{\"", archive::type, "\":\"");
  text_.put(opening);
  text_.put(type);
  text_.put('"');
}

void DataEncoder::component(std::string_view name, double number) {
  text_.put(",\"");
  text_.put(name);
  text_.put("\":");
  writeDouble(number);
}

void DataEncoder::component(std::string_view name, std::uint64_t number) {
  text_.put(",\"");
  text_.put(name);
  text_.put("\":");
  text_.writeUnsigned(number);
}

}  // namespace zeb::detail
