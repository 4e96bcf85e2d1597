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
NSData utf16Data(const NSString& string) {
  const std::u16string units = u'\uFEFF' + string.utf16();
  return NSData::dataWithBytes(std::as_bytes(std::span(units)));
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
  text_.put(',');
  Field field{key.hash(), 0, text_.size(), 0, 0};
  writeKey(key);
  field.valueStart = text_.size();
  field.keyLength = static_cast<std::uint32_t>(field.valueStart - field.keyStart);
  writeValue();
  field.valueEnd = text_.size();
  finishField(field);
  guard.fieldIsWritten();
}

void DataEncoder::writeKey(const StringKey& key) {
  static constexpr auto opening = joinedText("\"", archive::fieldPrefix);
  text_.put(opening);
  const std::string_view utf8 = key.utf8();
  if (!utf8.empty() && isASCII(utf8)) {
    text_.writeASCII(utf8);
  } else if (const NSString string = key.string(); !string.isNil()) {
    text_.writeContent(string.text());
  }
  text_.put("\":");
}

void DataEncoder::finishField(const Field& field) {
  // Up to this number, a linear search is faster than a dictionary.
  constexpr std::size_t maxSearchedFields = 32;
  const std::size_t firstField = innermostObject_->firstField;
  const std::size_t count = fields_.size();
  if (count - firstField > maxSearchedFields) return finishFieldOfLargeObject(field);
  for (std::size_t index = firstField; index < count; ++index) {
    Field& earlier = fields_[index];
    if (earlier.keyHash == field.keyHash && keyText(earlier) == keyText(field)) {
      return replaceValue(earlier, field);
    }
  }
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
void DataEncoder::encodeString(const NSString& string, const StringKey& forKey) {
  if (!string.isNil()) writeField(forKey, [&] { writeString(string); });
}
void DataEncoder::encodeNumber(const NSNumber& number, const StringKey& forKey) {
  if (!number.isNil()) writeField(forKey, [&] { writeNumber(number); });
}
void DataEncoder::encodeBool(bool boolean, const StringKey& forKey) {
  writeField(forKey, [&] { text_.put(boolean ? "true" : "false"); });
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
      return writeString(NSString(value));
    case ValueKind::Data:
      return writeBytes(archive::typeData, NSData(value));
    case ValueKind::Date: {
      const Nesting nesting(*this, 1);
      openTagged(archive::typeDate);
      component(archive::interval, NSDate(value).timeIntervalSince1970());
      return text_.put('}');
    }
    case ValueKind::Array:
      return writeArray(NSArray(value));
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

bool DataEncoder::writeIfObject(const NSObject& object) {
  if (const auto* native = dynamic_cast<const EncodableBox*>(&object)) {
    writeFields(native->encodableName(), [&] { native->encode(*this); });
  } else if (const auto* legacy = dynamic_cast<const ZEBObjCEncodable*>(&object)) {
    writeFields(legacy->encodableName(), [&] { legacy->encodeWithEncoder(*this); });
  } else {
    return false;
  }
  return true;
}

/// Writes an object's dictionary.
template <class EncodeFields>
void DataEncoder::writeFields(const NSString& encodableName, const EncodeFields& encodeFields) {
  if (encodableName.isNil()) raiseInvalidArgument("An object's encodable name can't be nil");
  const Nesting nesting(*this, 1);
  OpenObject object{.firstField = fields_.size()};
  OpenObject* const outerObject = std::exchange(innermostObject_, &object);
  static constexpr auto opening = joinedText("{\"", archive::encodableName, "\":");
  text_.put(opening);
  text_.writeString(encodableName.text());
  encodeFields();
  if (object.hasReplacedValues) removeReplacedValues();
  text_.put('}');
  fields_.resize(object.firstField);
  innermostObject_ = outerObject;
}

void DataEncoder::writeArray(const NSArray& array) {
  const Nesting nesting(*this, 2);
  openTagged(archive::typeArray);
  static constexpr auto values = joinedText(",\"", archive::arrayValues, "\":[");
  text_.put(values);
  for (const Value& element : array) {
    if (&element != array.begin()) text_.put(',');
    write(element);
  }
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

void DataEncoder::writeString(const NSString& string) {
  if (string.isWellFormed()) return text_.writeString(string.text());
  writeBytes(archive::typeUTF16String, utf16Data(string));
}

void DataEncoder::writeFloat(float number) {
  const Nesting nesting(*this, 1);
  openTagged(archive::typeFloat);
  component(archive::bits, std::uint64_t{std::bit_cast<std::uint32_t>(number)});
  text_.put('}');
}

void DataEncoder::writeDouble(double number) {
  const Nesting nesting(*this, 1);
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
