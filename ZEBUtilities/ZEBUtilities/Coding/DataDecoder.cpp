#include <ZEBPlatform/Foundation/detail/ArrayBuilder.h>
#include <ZEBPlatform/Foundation/detail/HashTable.h>
#include <ZEBPlatform/Foundation/detail/TreeRebuild.h>
#include <ZEBPlatform/Linux/detail/Stack.h>
#include <ZEBUtilities/Coding/ArchiveFormatPrivate.h>
#include <ZEBUtilities/Coding/ArchiveLimitsPrivate.h>
#include <ZEBUtilities/Coding/DataDecoderPrivate.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

namespace zeb::detail {

namespace {

/// UTF-16 with or without byte-order mark; nil for an odd number of bytes.
NSString stringFromUTF16(const NSData& data) {
  constexpr char16_t mark = 0xFEFF;
  constexpr char16_t swappedMark = 0xFFFE;
  const std::span<const std::byte> bytes = data.bytes();
  if (bytes.size() % sizeof(char16_t) != 0) return nullptr;
  std::u16string units(bytes.size() / sizeof(char16_t), u'\0');
  std::memcpy(units.data(), bytes.data(), bytes.size());
  if (units.starts_with(swappedMark)) {
    for (char16_t& unit : units) unit = static_cast<char16_t>(unit << 8 | unit >> 8);
  }
  if (units.starts_with(mark)) units.erase(0, 1);
  return NSString(std::u16string_view(units));
}

/// Whether a dictionary's key is the prefixed form of an object's own key. Sometimes false for keys
/// beyond ASCII.
bool isStoredForm(const Value& stored, const StringKey& key) noexcept {
  constexpr std::string_view prefix = archive::fieldPrefix;
  const std::string_view own = key.utf8();
  if (!stored.isString() || own.empty()) return false;
  const auto& text = *stored.storageAs<StringStorage>();
  return !text.isWide() && text.length == prefix.size() + own.size() &&
         equalBytes(text.ascii(), prefix.data(), prefix.size()) &&
         equalBytes(text.ascii() + prefix.size(), own.data(), own.size());
}

bool isText(const Value& value, const StringKey& text) noexcept {
  return value.isString() && text.matches(*value.storageAs<StringStorage>());
}

bool isUnsigned(const Value& value) noexcept {
  return value.kind() == ValueKind::UnsignedInteger ||
         (value.kind() == ValueKind::SignedInteger && value.longLongValue() >= 0);
}

/// The number of an archived double in the form that encoders write; empty for other dictionaries.
std::optional<double> usualDouble(const DictionaryStorage& dictionary) noexcept {
  if (dictionary.used != 2) return std::nullopt;
  const DictionaryEntry& type = dictionary.entries[0];
  const DictionaryEntry& bits = dictionary.entries[1];
  const bool isUsual = isText(type.key, archive::type) && isText(bits.key, archive::bits) &&
                       isText(type.value, archive::typeDouble) && isUnsigned(bits.value);
  if (!isUsual) return std::nullopt;
  return std::bit_cast<double>(bits.value.payload());
}

/// A copy that owns its memory.
NSString textOf(const StringStorage& text) {
  return text.isWide() ? NSString(std::u16string_view(text.units(), text.length))
                       : NSString(std::string_view(text.ascii(), text.length));
}

}  // namespace

/// Makes a dictionary the current one as long as the step lives. Throws when too little of the
/// stack remains.
class DataDecoder::Step {
 public:
  Step(DataDecoder& decoder, const DictionaryStorage& currentDictionary, const StringKey& stepKey,
       std::size_t stepIndex)
      : dictionary(currentDictionary),
        expected(currentDictionary.entries),
        key(stepKey),
        index(stepIndex),
        outer(decoder.innermost_),
        decoder_(decoder) {
    if (remainingStack() < minRemainingStack) {
      throw ZEBUnarchiverError::unexpectedContent(key.string());
    }
    decoder.innermost_ = this;
  }
  Step(const Step&) = delete;
  Step& operator=(const Step&) = delete;
  ~Step() { decoder_.innermost_ = outer; }

  /// Calls `isWanted` with the key of the entry after the one that was read last, because fields
  /// are mostly read in the order in which they were written. Null when that is another one.
  template <class IsWanted>
  const Value* takeExpected(const IsWanted& isWanted) noexcept {
    if (expected == dictionary.entries + dictionary.used || !isWanted(expected->key)) {
      return nullptr;
    }
    return &(expected++)->value;
  }

  /// The caller keeps the document, which these refer to.
  const DictionaryStorage& dictionary;
  const DictionaryEntry* expected;
  const StringKey& key;
  const std::size_t index;  ///< in the list under the key; NSNotFound without a list
  Step* const outer;

 private:
  DataDecoder& decoder_;
};

DataDecoder::DataDecoder(Ref<DecodingBuilderRegistry> decodingBuilderRegistry)
    : decodingBuilderRegistry_(std::move(decodingBuilderRegistry)) {}

Value DataDecoder::decodeRoot(const NSDictionary& document) {
  return decoded(document, archive::root);
}

std::string DataDecoder::path() const {
  std::string path;
  for (const Step* step = innermost_; step; step = step->outer) {
    const bool isElement = step->index != NSNotFound;
    std::string text =
        isElement ? "[" + std::to_string(step->index) + "]" : step->key.string().utf8();
    if (!isElement && step->outer) text.insert(0, ".");
    path.insert(0, text);
  }
  return path;
}

Value DataDecoder::decoded(const Value& value, const StringKey& key, std::size_t index) {
  // Detached, because a string that an object keeps would keep the whole document in memory.
  if (value.isString()) return value.detachedCopy();
  if (value.isNumber() || value.isData() || value.isDate()) return value;
  if (!value.isDictionary()) throw ZEBUnarchiverError::unexpectedContent(key.string());
  const auto& dictionary = *value.storageAs<DictionaryStorage>();
  if (const std::optional<double> number = usualDouble(dictionary)) return *number;
  Step step(*this, dictionary, key, index);
  try {
    const Value* type = find(archive::type);
    return type && type->isString() ? decodedTagged(*type->storageAs<StringStorage>(), key)
                                    : decodedObject(key);
  } catch (ZEBUnarchiverError& error) {
    if (error.path().empty()) error.setPath(path());
    throw;
  }
}

Value DataDecoder::decodedObject(const StringKey& key) {
  const Value* name = find(archive::encodableName);
  if (!name) throw ZEBUnarchiverError::missingEncodableName(key.string());
  if (!name->isString()) throw ZEBUnarchiverError::unexpectedDataType(archive::encodableName);
  Value object = built(*name->storageAs<StringStorage>()).value();
  if (object.isNil()) throw ZEBUnarchiverError::unexpectedContent(key.string());
  return object;
}

ZEBEitherEncodable DataDecoder::built(const StringStorage& encodableName) {
  KnownBuilder& known = knownBuilders_[hashOfString(encodableName) % knownBuilders_.size()];
  if (known.name && equalStrings(*known.name, encodableName)) return known.builder->build(*this);
  const NSString name = textOf(encodableName);
  Ref<DecodingBuilder> builder =
      decodingBuilderRegistry_ ? decodingBuilderRegistry_->decodingBuilder(name) : nullptr;
  if (!builder) throw ZEBUnarchiverError::missingDecodingBuilder(name);
  if (!known.name) known = {&encodableName, builder};
  return builder->build(*this);
}

Value DataDecoder::decodedTagged(const StringStorage& type, const StringKey& key) {
  const auto is = [&type](const StringKey& name) { return name.matches(type); };
  if (is(archive::typeDouble)) {
    return std::bit_cast<double>(unsignedComponent(archive::bits, UINT64_MAX));
  }
  if (is(archive::typeFloat)) {
    const auto bits = static_cast<std::uint32_t>(unsignedComponent(archive::bits, UINT32_MAX));
    return std::bit_cast<float>(bits);
  }
  if (is(archive::typeArray)) return listComponent(archive::arrayValues, key);
  if (is(archive::typeDictionary)) return decodedDictionary(key);
  if (is(archive::typeData)) return bytesComponent();
  if (is(archive::typeDate)) return dateComponent();
  if (is(archive::typeUTF16String)) {
    NSString string = stringFromUTF16(bytesComponent());
    if (string.isNil()) throw ZEBUnarchiverError::unexpectedContent(archive::bytes);
    return string;
  }
  if (is(archive::typeCGRect)) {
    const CGPoint origin{doubleComponent(archive::x), doubleComponent(archive::y)};
    return boxed(
        CGRect{origin, {doubleComponent(archive::width), doubleComponent(archive::height)}});
  }
  if (is(archive::typeCGPoint)) {
    return boxed(CGPoint{doubleComponent(archive::x), doubleComponent(archive::y)});
  }
  if (is(archive::typeCGSize)) {
    return boxed(CGSize{doubleComponent(archive::width), doubleComponent(archive::height)});
  }
  if (is(archive::typeNSRange)) {
    return boxed(NSRange{unsignedComponent(archive::location, UINT64_MAX),
                         unsignedComponent(archive::length, UINT64_MAX)});
  }
  if (is(archive::typeCLLocation)) return decodedLocation();
  // Deliberately the type's name in place of the key, so that diagnostics show it.
  throw ZEBUnarchiverError::unexpectedContent(textOf(type));
}

Value DataDecoder::decodedDictionary(const StringKey& key) {
  const NSArray keys(listComponent(archive::keys, key));
  const NSArray values(listComponent(archive::values, key));
  if (keys.count() != values.count()) throw ZEBUnarchiverError::unexpectedContent(key.string());
  NSMutableDictionary dictionary = NSMutableDictionary::dictionaryWithCapacity(keys.count());
  for (std::size_t index = 0; index < keys.count(); ++index) {
    const Value& entryKey = keys.begin()[index];
    if (!entryKey.isString() && !NSNumber(entryKey).isSigned64()) {
      throw ZEBUnarchiverError::unexpectedContent(key.string());
    }
    dictionary.setObject(values.begin()[index], entryKey);
  }
  return frozen(std::move(dictionary));
}

Value DataDecoder::decodedLocation() {
  CLLocation::Fields fields;
  fields.coordinate.latitude = doubleComponent(archive::latitude);
  fields.coordinate.longitude = doubleComponent(archive::longitude);
  fields.timestamp = dateComponent();
  fields.altitude = doubleComponent(archive::altitude);
  fields.horizontalAccuracy = doubleComponent(archive::horizontalAccuracy);
  fields.verticalAccuracy = doubleComponent(archive::verticalAccuracy);
  fields.course = doubleComponent(archive::course);
  fields.speed = doubleComponent(archive::speed);
  return makeRef<CLLocation>(fields);
}

Value DataDecoder::component(const StringKey& name) {
  const Value* value = find(name);
  if (!value) throw ZEBUnarchiverError::missingRequiredData(name.string());
  return decoded(*value, name);
}

double DataDecoder::doubleComponent(const StringKey& name) {
  const Value value = component(name);
  if (!value.isNumber()) throw ZEBUnarchiverError::unexpectedDataType(name.string());
  return value.doubleValue();
}

std::uint64_t DataDecoder::unsignedComponent(const StringKey& name, std::uint64_t max) {
  const NSNumber number(component(name));
  if (number.isNil()) throw ZEBUnarchiverError::unexpectedDataType(name.string());
  if (!isUnsigned(number) || number.unsignedLongLongValue() > max) {
    throw ZEBUnarchiverError::unexpectedContent(name.string());
  }
  return number.unsignedLongLongValue();
}

NSDate DataDecoder::dateComponent() {
  return NSDate::dateWithTimeIntervalSince1970(doubleComponent(archive::interval));
}

NSData DataDecoder::bytesComponent() {
  const NSString text(component(archive::bytes));
  if (text.isNil()) throw ZEBUnarchiverError::unexpectedDataType(archive::bytes);
  NSData bytes = NSData::dataWithBase64EncodedString(text);
  if (bytes.isNil()) throw ZEBUnarchiverError::unexpectedContent(archive::bytes);
  return bytes;
}

Value DataDecoder::listComponent(const StringKey& name, const StringKey& key) {
  const Value* value = find(name);
  if (!value) throw ZEBUnarchiverError::missingRequiredData(name.string());
  if (!value->isArray()) throw ZEBUnarchiverError::unexpectedDataType(name.string());
  const auto& list = *value->storageAs<ArrayStorage>();
  ArrayBuilder elements(list.count);
  for (std::size_t index = 0; index < list.count; ++index) {
    elements.append(decoded(list.values()[index], key, index));
  }
  return elements.finish();
}

const Value* DataDecoder::find(const StringKey& storedKey) const noexcept {
  const std::uint64_t wantedHead = Value::headOfKey(ValueKind::String, storedKey.hash());
  const Value* expected = innermost_->takeExpected([&](const Value& key) {
    return key.head() == wantedHead && storedKey.matches(*key.storageAs<StringStorage>());
  });
  if (expected) return expected;
  const DictionaryEntry* entry = findEntry(innermost_->dictionary, storedKey);
  if (!entry) return nullptr;
  innermost_->expected = entry + 1;
  return &entry->value;
}

const Value* DataDecoder::stored(const StringKey& key) const {
  const Value* expected =
      innermost_->takeExpected([&](const Value& stored) { return isStoredForm(stored, key); });
  return expected ? expected : find(fieldKeys_.stored(key));
}

bool DataDecoder::containsValueForKey(const StringKey& key) const { return stored(key) != nullptr; }

Value DataDecoder::decodeObjectForKey(const StringKey& key) {
  const Value* value = stored(key);
  if (!value) throw ZEBUnarchiverError::missingRequiredData(key.string());
  return decoded(*value, key);
}

template <class Handle>
Handle DataDecoder::handleOrNil(const StringKey& key) {
  const Value* value = stored(key);
  if (!value) return nullptr;
  // Strings must be detached, and dictionaries may be tagged values. Other kinds are returned as
  // they are.
  const bool isPlain = !value->isString() && !value->isDictionary();
  Handle handle(isPlain ? *value : decoded(*value, key));
  if (handle.isNil()) throw ZEBUnarchiverError::unexpectedDataType(key.string());
  return handle;
}

template <class Record>
std::optional<Record> DataDecoder::recordOrNil(const StringKey& key) {
  const Value* value = stored(key);
  if (!value) return std::nullopt;
  const Value object = value->isDictionary() ? decoded(*value, key) : Value();
  const Record* record = unboxed<Record>(object);
  if (!record) throw ZEBUnarchiverError::unexpectedDataType(key.string());
  return *record;
}

NSNumber DataDecoder::requiredNumber(const StringKey& key) {
  NSNumber number = handleOrNil<NSNumber>(key);
  if (number.isNil()) throw ZEBUnarchiverError::missingRequiredData(key.string());
  return number;
}

template <class Record>
Record DataDecoder::requiredRecord(const StringKey& key) {
  const std::optional<Record> record = recordOrNil<Record>(key);
  if (!record) throw ZEBUnarchiverError::missingRequiredData(key.string());
  return *record;
}

NSString DataDecoder::decodeStringForKey(const StringKey& key) {
  NSString string = decodeStringOptionalForKey(key);
  if (string.isNil()) throw ZEBUnarchiverError::missingRequiredData(key.string());
  return string;
}
NSString DataDecoder::decodeStringForKey(const StringKey& key, const NSString& defaultValue) {
  NSString string = decodeStringOptionalForKey(key);
  return string.isNil() ? defaultValue : string;
}
NSString DataDecoder::decodeStringOptionalForKey(const StringKey& key) {
  return handleOrNil<NSString>(key);
}

NSNumber DataDecoder::decodeNumberForKey(const StringKey& key, const NSNumber& defaultValue) {
  NSNumber number = decodeNumberOptionalForKey(key);
  return number.isNil() ? defaultValue : number;
}
NSNumber DataDecoder::decodeNumberOptionalForKey(const StringKey& key) {
  return handleOrNil<NSNumber>(key);
}

bool DataDecoder::decodeBoolForKey(const StringKey& key) { return requiredNumber(key).boolValue(); }
bool DataDecoder::decodeBoolForKey(const StringKey& key, bool defaultValue) {
  return decodeNumberForKey(key, defaultValue).boolValue();
}

std::int64_t DataDecoder::decodeIntForKey(const StringKey& key) { return decodeInt64ForKey(key); }
std::int64_t DataDecoder::decodeIntForKey(const StringKey& key, std::int64_t defaultValue) {
  return decodeInt64ForKey(key, defaultValue);
}

std::int32_t DataDecoder::decodeInt32ForKey(const StringKey& key) {
  return requiredNumber(key).intValue();
}
std::int32_t DataDecoder::decodeInt32ForKey(const StringKey& key, std::int32_t defaultValue) {
  return decodeNumberForKey(key, defaultValue).intValue();
}

std::int64_t DataDecoder::decodeInt64ForKey(const StringKey& key) {
  return requiredNumber(key).longLongValue();
}
std::int64_t DataDecoder::decodeInt64ForKey(const StringKey& key, std::int64_t defaultValue) {
  return decodeNumberForKey(key, defaultValue).longLongValue();
}

float DataDecoder::decodeFloatForKey(const StringKey& key) {
  return requiredNumber(key).floatValue();
}
float DataDecoder::decodeFloatForKey(const StringKey& key, float defaultValue) {
  return decodeNumberForKey(key, defaultValue).floatValue();
}

double DataDecoder::decodeDoubleForKey(const StringKey& key) {
  return requiredNumber(key).doubleValue();
}
double DataDecoder::decodeDoubleForKey(const StringKey& key, double defaultValue) {
  return decodeNumberForKey(key, defaultValue).doubleValue();
}

CGRect DataDecoder::decodeCGRectForKey(const StringKey& key) { return requiredRecord<CGRect>(key); }
CGRect DataDecoder::decodeCGRectForKey(const StringKey& key, const CGRect& defaultValue) {
  return recordOrNil<CGRect>(key).value_or(defaultValue);
}

CGPoint DataDecoder::decodeCGPointForKey(const StringKey& key) {
  return requiredRecord<CGPoint>(key);
}
CGPoint DataDecoder::decodeCGPointForKey(const StringKey& key, const CGPoint& defaultValue) {
  return recordOrNil<CGPoint>(key).value_or(defaultValue);
}

CGSize DataDecoder::decodeCGSizeForKey(const StringKey& key) { return requiredRecord<CGSize>(key); }
CGSize DataDecoder::decodeCGSizeForKey(const StringKey& key, const CGSize& defaultValue) {
  return recordOrNil<CGSize>(key).value_or(defaultValue);
}

NSRange DataDecoder::decodeRangeForKey(const StringKey& key) {
  return requiredRecord<NSRange>(key);
}
NSRange DataDecoder::decodeRangeForKey(const StringKey& key, const NSRange& defaultValue) {
  return recordOrNil<NSRange>(key).value_or(defaultValue);
}

}  // namespace zeb::detail
