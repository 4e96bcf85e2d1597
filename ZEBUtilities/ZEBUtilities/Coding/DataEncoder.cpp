#include <Foundation/NSData.h>
#include <Foundation/NSError.h>
#include <Foundation/TreeRebuild.h>
#include <Linux/Console.h>
#include <Linux/Stack.h>
#include <ZEBUtilities/Coding/DataEncoderPrivate.h>

#include <bit>
#include <string>
#include <typeinfo>
#include <variant>

namespace zeb::detail {

namespace {

template <class... Visitors>
struct Overloaded : Visitors... {
  using Visitors::operator()...;
};

constexpr std::size_t usualFieldCount = 8;

[[noreturn]] void stopFor(const char* message, const Value& value) {
  fatal(std::string(message) + " " + value.description().utf8());
}

bool mayBeKey(const Value& key) {
  return key.isString() || (key.isNumber() && NSNumber(key).isSigned64());
}

/// The text with its byte-order mark, in the machine's own byte order.
NSData utf16Data(const NSString& string) {
  const std::u16string units = u'\uFEFF' + string.utf16();
  return NSData::dataWithBytes(std::as_bytes(std::span(units)));
}

}  // namespace

/// One level further down, for as long as it lives. Throws when that is too deep: for the stack, or
/// because no document that deep could be read back.
class DataEncoder::Nesting {
 public:
  explicit Nesting(DataEncoder& encoder) : encoder_(encoder) {
    constexpr std::size_t deepest = 512;  // levels of JSON; every level here makes at least one
    if (encoder_.depth_ == deepest || remainingStack() < leastRemainingStack) {
      throw NSError(
          NSCocoaErrorDomain, NSPropertyListWriteInvalidError,
          {{NSLocalizedDescriptionKey, "The objects are nested too deeply to be archived."}});
    }
    ++encoder_.depth_;
  }
  Nesting(const Nesting&) = delete;
  Nesting& operator=(const Nesting&) = delete;
  ~Nesting() { --encoder_.depth_; }

 private:
  DataEncoder& encoder_;
};

DataEncoder::DataEncoder() = default;

void DataEncoder::store(Value encoded, const StringKey& forKey) {
  currentDictionary_.setObject(std::move(encoded), fieldKeys_.stored(forKey));
}

void DataEncoder::encodeObject(const Value& object, const StringKey& forKey) {
  if (!object.isNil()) store(encoded(object), forKey);
}
void DataEncoder::encodeString(const NSString& string, const StringKey& forKey) {
  if (!string.isNil()) store(encodedString(string), forKey);
}
void DataEncoder::encodeNumber(const NSNumber& number, const StringKey& forKey) {
  if (!number.isNil()) store(encodedNumber(number), forKey);
}
void DataEncoder::encodeBool(bool boolean, const StringKey& forKey) { store(boolean, forKey); }
void DataEncoder::encodeInt(std::int64_t integer, const StringKey& forKey) {
  store(integer, forKey);
}
void DataEncoder::encodeInt32(std::int32_t integer, const StringKey& forKey) {
  store(integer, forKey);
}
void DataEncoder::encodeInt64(std::int64_t integer, const StringKey& forKey) {
  store(integer, forKey);
}
void DataEncoder::encodeFloat(float number, const StringKey& forKey) {
  store(encodedNumber(number), forKey);
}
void DataEncoder::encodeDouble(double number, const StringKey& forKey) {
  store(encodedNumber(number), forKey);
}
void DataEncoder::encodeCGRect(const CGRect& rect, const StringKey& forKey) {
  encodeObject(boxed(rect), forKey);
}
void DataEncoder::encodeCGPoint(const CGPoint& point, const StringKey& forKey) {
  encodeObject(boxed(point), forKey);
}
void DataEncoder::encodeCGSize(const CGSize& size, const StringKey& forKey) {
  encodeObject(boxed(size), forKey);
}
void DataEncoder::encodeRange(const NSRange& range, const StringKey& forKey) {
  encodeObject(boxed(range), forKey);
}

Value DataEncoder::tagged(const NSString& type, std::initializer_list<Component> components) const {
  NSMutableDictionary dictionary =
      NSMutableDictionary::dictionaryWithCapacity(components.size() + 1);
  dictionary.setObject(type, names_.type);
  for (const Component& component : components) {
    dictionary.setObject(component.value, component.name);
  }
  return frozen(std::move(dictionary));
}

Value DataEncoder::encoded(const Value& value) {
  switch (value.kind()) {
    case ValueKind::Boolean:
    case ValueKind::SignedInteger:
    case ValueKind::UnsignedInteger:
    case ValueKind::Float:
    case ValueKind::Double:
      return encodedNumber(NSNumber(value));
    case ValueKind::String:
      return encodedString(NSString(value));
    case ValueKind::Data:
      return tagged(names_.typeData, {{names_.bytes, NSData(value).base64EncodedString()}});
    case ValueKind::Date:
      return tagged(names_.typeDate,
                    {{names_.interval, encodedDouble(NSDate(value).timeIntervalSince1970())}});
    case ValueKind::Array:
      return encodedArray(NSArray(value));
    case ValueKind::Dictionary:
      return encodedDictionary(NSDictionary(value));
    case ValueKind::Object:
      break;
    default:
      stopFor("Object must be either Encodable, ZEBObjCEncodable, Array, or Dictionary:", value);
  }
  const NSObject* object = value.objectPointer();
  if (typeid(*object) == typeid(NSValue)) return encodedBox(*static_cast<const NSValue*>(object));
  if (typeid(*object) == typeid(CLLocation)) {
    return encodedLocation(*static_cast<const CLLocation*>(object));
  }
  if (const auto* native = dynamic_cast<const EncodableBox*>(object)) {
    return encodedFields(native->encodableName(), [&] { native->encode(*this); });
  }
  if (const auto* legacy = dynamic_cast<const ZEBObjCEncodable*>(object)) {
    return encodedFields(legacy->encodableName(), [&] { legacy->encodeWithEncoder(*this); });
  }
  stopFor("Object must be either Encodable, ZEBObjCEncodable, Array, or Dictionary:", value);
}

Value DataEncoder::encodedNumber(const NSNumber& number) const {
  switch (number.objCType()) {
    case 'f':
      return tagged(names_.typeFloat,
                    {{names_.bits, std::bit_cast<std::uint32_t>(number.floatValue())}});
    case 'd':
      return tagged(names_.typeDouble,
                    {{names_.bits, std::bit_cast<std::uint64_t>(number.doubleValue())}});
    default:
      return number;
  }
}

Value DataEncoder::encodedString(const NSString& string) const {
  if (string.isWellFormed()) return string.copy();
  return tagged(names_.typeUTF16String, {{names_.bytes, utf16Data(string).base64EncodedString()}});
}

Value DataEncoder::encodedBox(const NSValue& box) const {
  return std::visit(
      Overloaded{
          [&](const CGRect& rect) {
            return tagged(names_.typeCGRect, {{names_.x, encodedDouble(rect.origin.x)},
                                              {names_.y, encodedDouble(rect.origin.y)},
                                              {names_.width, encodedDouble(rect.size.width)},
                                              {names_.height, encodedDouble(rect.size.height)}});
          },
          [&](const CGPoint& point) {
            return tagged(names_.typeCGPoint,
                          {{names_.x, encodedDouble(point.x)}, {names_.y, encodedDouble(point.y)}});
          },
          [&](const CGSize& size) {
            return tagged(names_.typeCGSize, {{names_.width, encodedDouble(size.width)},
                                              {names_.height, encodedDouble(size.height)}});
          },
          [&](const NSRange& range) {
            return tagged(names_.typeNSRange, {{names_.location, std::uint64_t{range.location}},
                                               {names_.length, std::uint64_t{range.length}}});
          },
          [&](const CGAffineTransform&) -> Value {
            stopFor("Object must be either Encodable, ZEBObjCEncodable, Array, or Dictionary:",
                    boxed(box.content()));
          },
      },
      box.content());
}

Value DataEncoder::encodedLocation(const CLLocation& location) const {
  return tagged(names_.typeCLLocation,
                {{names_.latitude, encodedDouble(location.coordinate().latitude)},
                 {names_.longitude, encodedDouble(location.coordinate().longitude)},
                 {names_.interval, encodedDouble(location.timestamp().timeIntervalSince1970())},
                 {names_.altitude, encodedDouble(location.altitude())},
                 {names_.horizontalAccuracy, encodedDouble(location.horizontalAccuracy())},
                 {names_.verticalAccuracy, encodedDouble(location.verticalAccuracy())},
                 {names_.course, encodedDouble(location.course())},
                 {names_.speed, encodedDouble(location.speed())}});
}

Value DataEncoder::encodedArray(const NSArray& array) {
  const Nesting nesting(*this);
  NSMutableArray elements = NSMutableArray::arrayWithCapacity(array.count());
  for (const Value& element : array) elements.addObject(encoded(element));
  return tagged(names_.typeArray, {{names_.arrayValues, frozen(std::move(elements))}});
}

Value DataEncoder::encodedDictionary(const NSDictionary& dictionary) {
  const Nesting nesting(*this);
  NSMutableArray keys = NSMutableArray::arrayWithCapacity(dictionary.count());
  NSMutableArray values = NSMutableArray::arrayWithCapacity(dictionary.count());
  for (const auto& [key, value] : dictionary) {
    if (!mayBeKey(key)) {
      stopFor("Dictionary keys must be either Int, Int64, or String:", key);
    }
    keys.addObject(encoded(key));
    values.addObject(encoded(value));
  }
  return tagged(names_.typeDictionary, {{names_.keys, frozen(std::move(keys))},
                                        {names_.values, frozen(std::move(values))}});
}

/// An object's own dictionary: its fields go into a fresh current dictionary, which then makes room for
/// the one before. Where there was none before, it is the document.
template <class EncodeFields>
Value DataEncoder::encodedFields(const NSString& encodableName, const EncodeFields& encodeFields) {
  const Nesting nesting(*this);
  stack_.push_back(std::exchange(currentDictionary_,
                                 NSMutableDictionary::dictionaryWithCapacity(usualFieldCount)));
  currentDictionary_.setObject(encodableName.copy(), names_.encodableName);
  encodeFields();
  Value finished = frozen(std::exchange(currentDictionary_, std::move(stack_.back())));
  stack_.pop_back();
  if (stack_.empty()) rootDictionary_ = NSDictionary(finished);
  return finished;
}

}  // namespace zeb::detail
