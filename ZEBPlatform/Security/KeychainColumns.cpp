#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Security/KeychainColumnsPrivate.h>
#include <ZEBPlatform/Security/KeychainStore.h>

#include <bit>
#include <cmath>

namespace zeb {

namespace {

enum class Kind : std::uint8_t { text, data, textOrData, number, date };

struct AttributeFacts {
  const char* name;
  Kind kind;
};

// In the enumeration's order.
constexpr std::array<AttributeFacts, keychainAttributeCount> facts = {{
    {"accessGroup", Kind::text},
    {"account", Kind::textOrData},
    {"service", Kind::text},
    {"generic", Kind::data},
    {"label", Kind::text},
    {"accessible", Kind::text},
    {"applicationTag", Kind::data},
    {"applicationLabel", Kind::data},
    {"keyType", Kind::text},
    {"keyClass", Kind::text},
    {"keySizeInBits", Kind::number},
    {"creationDate", Kind::date},
    {"modificationDate", Kind::date},
}};

constexpr KeychainAttribute passwordIdentity[] = {
    KeychainAttribute::service, KeychainAttribute::account, KeychainAttribute::accessGroup};
constexpr KeychainAttribute keyIdentity[] = {
    KeychainAttribute::applicationTag, KeychainAttribute::keyClass, KeychainAttribute::keyType,
    KeychainAttribute::accessGroup};

constexpr std::size_t indexOf(KeychainAttribute attribute) noexcept {
  return static_cast<std::size_t>(attribute);
}
constexpr KeychainAttribute attributeAt(std::size_t index) noexcept {
  return static_cast<KeychainAttribute>(index);
}

/// The first attribute of a mask that is not empty.
KeychainAttribute firstAttribute(KeychainAttributeMask mask) noexcept {
  return attributeAt(static_cast<std::size_t>(std::countr_zero(mask)));
}

bool mayBeText(KeychainAttribute attribute) noexcept {
  const Kind kind = facts[indexOf(attribute)].kind;
  return kind == Kind::text || kind == Kind::textOrData;
}
bool mayBeData(KeychainAttribute attribute) noexcept {
  const Kind kind = facts[indexOf(attribute)].kind;
  return kind == Kind::data || kind == Kind::textOrData;
}

std::string_view bytesOf(sqlite3_value* value) noexcept {
  const void* const bytes = sqlite3_value_blob(value);
  const int length = sqlite3_value_bytes(value);
  return {bytes ? static_cast<const char*>(bytes) : "", static_cast<std::size_t>(length)};
}

}  // namespace

const char* columnName(KeychainAttribute attribute) noexcept {
  return facts[indexOf(attribute)].name;
}

const char* tableName(KeychainItemClass itemClass) noexcept {
  return itemClass == KeychainItemClass::genericPassword ? "passwords" : "keys";
}

std::span<const KeychainAttribute> identityAttributes(KeychainItemClass itemClass) noexcept {
  if (itemClass == KeychainItemClass::genericPassword) return passwordIdentity;
  return keyIdentity;
}

KeychainAttributeMask identityMask(KeychainItemClass itemClass) noexcept {
  KeychainAttributeMask mask = 0;
  for (const KeychainAttribute attribute : identityAttributes(itemClass)) mask |= maskOf(attribute);
  return mask;
}

KeychainAttributeMask exactAttributes(KeychainAttributeMask mask) noexcept {
  return mask &
         ~(maskOf(KeychainAttribute::keySizeInBits) | maskOf(KeychainAttribute::creationDate) |
           maskOf(KeychainAttribute::modificationDate));
}

void KeychainColumns::set(KeychainAttribute attribute, const Column& column) noexcept {
  columns_[indexOf(attribute)] = column;
  if (column.form != Form::absent) present_ |= maskOf(attribute);
}

OSStatus KeychainColumns::take(const KeychainAttributes& attributes) {
  for (std::size_t i = 0; i < keychainAttributeCount; ++i) {
    const Value& value = attributes[attributeAt(i)];
    if (value.isNil()) continue;
    if (const OSStatus status = takeValue(attributeAt(i), value)) return status;
  }
  return errSecSuccess;
}

OSStatus KeychainColumns::takeValue(KeychainAttribute attribute, const Value& value) {
  const Kind kind = facts[indexOf(attribute)].kind;
  Column column;
  if (value.isString() && mayBeText(attribute)) {
    column.form = Form::text;
    const auto& text = *value.storageAs<detail::StringStorage>();
    column.bytes = text.isWide() ? converted_.emplace_front(NSString(value).utf8())
                                 : std::string_view(text.ascii(), text.length);
  } else if (value.isData() && mayBeData(attribute)) {
    column.form = Form::data;
    column.bytes = NSData(value).view();
  } else if (value.isNumber() && kind == Kind::number) {
    const NSNumber number(value);
    const bool isInteger = number.isSigned64() || number.isBoolean();
    if (!isInteger && number.kind() == ValueKind::UnsignedInteger) return errSecParam;
    column.form = isInteger ? Form::integer : Form::real;
    if (isInteger) {
      column.integer = number.longLongValue();
    } else {
      column.real = number.doubleValue();
    }
  } else if (value.isDate() && kind == Kind::date) {
    column.form = Form::real;
    column.real = NSDate(value).timeIntervalSinceReferenceDate();
  } else {
    return errSecParam;
  }
  if (!column.bytes.data()) column.bytes = "";  // SQLite takes a null pointer as NULL
  // SQLite stores what is not a number as NULL.
  if (column.form == Form::real && std::isnan(column.real)) return errSecParam;
  if (column.bytes.size() > KeychainStore::maxAttributeLength) return errSecParam;
  set(attribute, column);
  return errSecSuccess;
}

OSStatus KeychainColumns::takeRow(sqlite3_stmt* statement, int first,
                                  KeychainAttributeMask selected,
                                  const KeychainColumns& condition) {
  present_ = 0;
  const KeychainAttributeMask known = exactAttributes(condition.present_);
  for (KeychainAttributeMask left = known; left != 0; left &= left - 1) {
    const KeychainAttribute attribute = firstAttribute(left);
    set(attribute, condition.columns_[indexOf(attribute)]);
  }
  for (KeychainAttributeMask left = selected; left != 0; left &= left - 1) {
    const KeychainAttribute attribute = firstAttribute(left);
    Column column;
    // Such values must not be shared by threads, but they cost less than the functions for columns.
    if (!takeColumn(attribute, sqlite3_column_value(statement, first++), column)) {
      return errSecDecode;
    }
    set(attribute, column);
  }
  return errSecSuccess;
}

/// Answers false if the value has a kind that the attribute cannot have.
bool KeychainColumns::takeColumn(KeychainAttribute attribute, sqlite3_value* value,
                                 Column& column) noexcept {
  const Kind kind = facts[indexOf(attribute)].kind;
  switch (sqlite3_value_type(value)) {
    case SQLITE_TEXT:
      column.form = Form::text;
      column.bytes = bytesOf(value);
      return mayBeText(attribute);
    case SQLITE_BLOB:
      column.form = Form::data;
      column.bytes = bytesOf(value);
      return mayBeData(attribute);
    case SQLITE_INTEGER:
      column.integer = sqlite3_value_int64(value);
      // In other attributes than numbers it stands for an absent one of the identity.
      if (kind == Kind::number) column.form = Form::integer;
      return kind == Kind::number || column.integer == 0;
    case SQLITE_FLOAT:
      column.form = Form::real;
      column.real = sqlite3_value_double(value);
      return kind == Kind::number || kind == Kind::date;
    default:
      return true;
  }
}

void KeychainColumns::overlay(const KeychainColumns& changes) {
  for (std::size_t i = 0; i < keychainAttributeCount; ++i) {
    if (changes.columns_[i].form != Form::absent) set(attributeAt(i), changes.columns_[i]);
  }
}

int KeychainColumns::bindColumn(sqlite3_stmt* statement, int parameter,
                                const Column& column) noexcept {
  const char* const bytes = column.bytes.data();
  const int length = static_cast<int>(column.bytes.size());
  // The columns outlive the step of the statement, so SQLite needs no copy.
  switch (column.form) {
    case Form::text:
      return sqlite3_bind_text(statement, parameter, bytes, length, SQLITE_STATIC);
    case Form::data:
      return sqlite3_bind_blob(statement, parameter, bytes, length, SQLITE_STATIC);
    case Form::integer:
      return sqlite3_bind_int64(statement, parameter, column.integer);
    case Form::real:
      return sqlite3_bind_double(statement, parameter, column.real);
    case Form::absent:
      break;
  }
  return sqlite3_bind_null(statement, parameter);
}

int KeychainColumns::bind(sqlite3_stmt* statement, int& parameter, KeychainAttributeMask mask,
                          KeychainItemClass itemClass) const noexcept {
  for (KeychainAttributeMask left = mask; left != 0; left &= left - 1) {
    const KeychainAttribute attribute = firstAttribute(left);
    const Column& column = columns_[indexOf(attribute)];
    const int result = column.form == Form::absent && (identityMask(itemClass) & maskOf(attribute))
                           ? sqlite3_bind_int64(statement, parameter, 0)
                           : bindColumn(statement, parameter, column);
    if (result != SQLITE_OK) return result;
    ++parameter;
  }
  return SQLITE_OK;
}

std::string KeychainColumns::identity(KeychainItemClass itemClass) const {
  std::size_t length = 1;
  for (const KeychainAttribute attribute : identityAttributes(itemClass)) {
    length += 5 + columns_[indexOf(attribute)].bytes.size();
  }
  std::string identity;
  identity.reserve(length);
  identity += static_cast<char>(itemClass);
  for (const KeychainAttribute attribute : identityAttributes(itemClass)) {
    const Column& column = columns_[indexOf(attribute)];
    char head[5] = {static_cast<char>(column.form)};
    for (unsigned i = 0; i < 4; ++i) head[1 + i] = static_cast<char>(column.bytes.size() >> 8 * i);
    identity.append(head, sizeof head).append(column.bytes);
  }
  return identity;
}

void KeychainColumns::copyTo(KeychainAttributes& attributes, KeychainAttributeMask known) const {
  for (std::size_t i = 0; i < keychainAttributeCount; ++i) {
    const Column& column = columns_[i];
    if (known & maskOf(attributeAt(i))) continue;
    Value& value = attributes[attributeAt(i)];
    switch (column.form) {
      case Form::absent:
        break;
      case Form::text:
        value = Value(column.bytes);
        break;
      case Form::data:
        value = NSData::dataWithBytes(column.bytes);
        break;
      case Form::integer:
        value = Value(column.integer);
        break;
      case Form::real:
        value = facts[i].kind == Kind::date
                    ? Value(NSDate::dateWithTimeIntervalSinceReferenceDate(column.real))
                    : Value(column.real);
        break;
    }
  }
}

}  // namespace zeb
