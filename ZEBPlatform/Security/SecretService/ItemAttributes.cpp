#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Security/KeychainStore.h>
#include <ZEBPlatform/Security/MessageDigest.h>
#include <ZEBPlatform/Security/SecretService/ItemAttributesPrivate.h>

#include <array>
#include <charconv>
#include <cmath>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace zeb {

namespace {

constexpr const char* schemaKey = "xdg:schema";
constexpr const char* schemaName = "zebutilities.KeychainItem";
constexpr const char* classKey = "class";
constexpr const char* identityKey = "identity";
constexpr const char* orderKey = "order";
constexpr const char* valueKey = "value";

/// In the order of `KeychainAttribute`.
constexpr std::array<const char*, keychainAttributeCount> attributeKeys = {
    "accessGroup",   "account",        "service",          "generic", "label",
    "accessible",    "applicationTag", "applicationLabel", "keyType", "keyClass",
    "keySizeInBits", "creationDate",   "modificationDate"};

constexpr std::string_view textKind = "text:";
/// A text that the bus cannot carry: with a zero or an unpaired surrogate.
constexpr std::string_view codedTextKind = "coded text:";
constexpr std::string_view dataKind = "data:";
constexpr std::string_view numberKind = "number:";
constexpr std::string_view dateKind = "date:";

const char* nameOf(KeychainItemClass itemClass) noexcept {
  return itemClass == KeychainItemClass::key ? "key" : "genericPassword";
}

/// Whether the attribute has values of this kind.
bool mayBe(KeychainAttribute attribute, const Value& value) noexcept {
  switch (attribute) {
    case KeychainAttribute::account:
      return value.isString() || value.isData();
    case KeychainAttribute::generic:
    case KeychainAttribute::applicationTag:
    case KeychainAttribute::applicationLabel:
      return value.isData();
    case KeychainAttribute::keySizeInBits:
      return value.isNumber();
    case KeychainAttribute::creationDate:
    case KeychainAttribute::modificationDate:
      return value.isDate();
    default:
      return value.isString();
  }
}

std::string hexText(std::string_view bytes) {
  constexpr std::string_view digits = "0123456789abcdef";
  std::string text;
  text.reserve(2 * bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

std::optional<std::string> bytesOfHexText(std::string_view text) {
  if (text.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  bytes.reserve(text.size() / 2);
  for (std::size_t i = 0; i < text.size(); i += 2) {
    unsigned char byte = 0;
    const char* const end = text.data() + i + 2;
    if (std::from_chars(text.data() + i, end, byte, 16).ptr != end) return std::nullopt;
    bytes += static_cast<char>(byte);
  }
  return bytes;
}

/// The one text for a value, so that equal texts are equal values of one kind; none for a number or
/// date whose value is not-a-number (NaN), for a kind that attributes do not have, and for a value
/// that is too long.
std::optional<std::string> coded(const Value& value) {
  if (value.isString()) {
    const NSString text(value);
    const std::string utf8 = text.utf8();
    if (utf8.size() > KeychainStore::maxAttributeLength) return std::nullopt;
    const bool isPlain = text.isWellFormed() && utf8.find('\0') == std::string::npos;
    return isPlain ? std::string(textKind) + utf8 : std::string(codedTextKind) + hexText(utf8);
  }
  if (value.isData() && NSData(value).length() > KeychainStore::maxAttributeLength) {
    return std::nullopt;
  }
  if (value.isData()) return std::string(dataKind) + hexText(NSData(value).view());
  if (value.isNumber() && std::isnan(value.doubleValue())) return std::nullopt;
  if (value.isNumber()) return std::string(numberKind) + NSNumber(value).stringValue().utf8();
  if (!value.isDate()) return std::nullopt;
  // Adding zero makes the negative zero, an equal date, a positive one.
  const double seconds = NSDate(value).timeIntervalSinceReferenceDate() + 0.0;
  if (std::isnan(seconds)) return std::nullopt;
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), seconds).ptr;
  return std::string(dateKind) + std::string(digits.data(), end);
}

template <class Number>
std::optional<Number> numberIn(std::string_view text) {
  Number number = 0;
  const char* const end = text.data() + text.size();
  const auto [last, error] = std::from_chars(text.data(), end, number);
  if (last != end || error != std::errc()) return std::nullopt;
  return number;
}

/// Nil if `coded` makes no such text.
Value decoded(std::string_view text) {
  const auto isOfKind = [&](std::string_view kind) {
    if (!text.starts_with(kind)) return false;
    text.remove_prefix(kind.size());
    return true;
  };
  if (isOfKind(textKind)) return NSString(text);
  if (isOfKind(codedTextKind)) {
    const std::optional<std::string> bytes = bytesOfHexText(text);
    return bytes ? Value(*bytes) : Value();
  }
  if (isOfKind(dataKind)) {
    const std::optional<std::string> bytes = bytesOfHexText(text);
    return bytes ? NSData::dataWithBytes(std::string_view(*bytes)) : Value();
  }
  if (isOfKind(numberKind)) {
    if (const auto integer = numberIn<std::int64_t>(text)) return *integer;
    if (const auto integer = numberIn<std::uint64_t>(text)) return *integer;
    const auto number = numberIn<double>(text);
    return number ? Value(*number) : Value();
  }
  if (!isOfKind(dateKind)) return nullptr;
  const auto seconds = numberIn<double>(text);
  return seconds ? NSDate::dateWithTimeIntervalSinceReferenceDate(*seconds) : Value();
}

/// Collects attributes, and whether one of them is of a wrong kind.
class AttributeWriter {
 public:
  AttributeWriter() {
    g_variant_builder_init(&builder_, G_VARIANT_TYPE("a{ss}"));
    add(schemaKey, schemaName);
  }
  explicit AttributeWriter(KeychainItemClass itemClass) : AttributeWriter() {
    add(classKey, nameOf(itemClass));
  }
  AttributeWriter(const AttributeWriter&) = delete;
  AttributeWriter& operator=(const AttributeWriter&) = delete;
  ~AttributeWriter() { g_variant_builder_clear(&builder_); }

  void add(const char* key, const char* text) {
    g_variant_builder_add(&builder_, "{ss}", key, text);
  }
  void addAll(const KeychainAttributes& attributes) {
    for (std::size_t i = 0; i < keychainAttributeCount; ++i) {
      const auto attribute = static_cast<KeychainAttribute>(i);
      const Value& value = attributes[attribute];
      if (value.isNil()) continue;
      const auto text = mayBe(attribute, value) ? coded(value) : std::nullopt;
      if (text) add(attributeKeys[i], text->c_str());
      if (!text) isRight_ = false;
    }
  }
  GLibPointer<GVariant> attributes() {
    GLibPointer<GVariant> all = ownedVariant(g_variant_builder_end(&builder_));
    return isRight_ ? std::move(all) : nullptr;
  }

 private:
  GVariantBuilder builder_;
  bool isRight_ = true;
};

}  // namespace

GLibPointer<GVariant> attributesOfQuery(const KeychainQuery& query) {
  AttributeWriter writer(query.itemClass);
  writer.addAll(query.attributes);
  return writer.attributes();
}

std::string identityOf(const KeychainItem& item) {
  using Attribute = KeychainAttribute;
  static constexpr std::array passwordParts = {Attribute::accessGroup, Attribute::service,
                                               Attribute::account};
  static constexpr std::array keyParts = {Attribute::accessGroup, Attribute::keyClass,
                                          Attribute::keyType, Attribute::applicationTag};
  const bool isKey = item.itemClass == KeychainItemClass::key;
  std::string identity = nameOf(item.itemClass);
  for (const Attribute part : isKey ? std::span<const Attribute>(keyParts) : passwordParts) {
    // With its length, so that two identities never make the same text. Nil is empty, as no value
    // is.
    const std::string text = coded(item.attributes[part]).value_or("");
    identity += '\n' + std::to_string(text.size()) + ':' + text;
  }
  std::array<std::byte, 32> digest;
  MessageDigest sha256(DigestAlgorithm::sha256, identity.size());
  sha256.update(std::as_bytes(std::span(identity)));
  sha256.finish(digest);
  return hexText({reinterpret_cast<const char*>(digest.data()), digest.size()});
}

GLibPointer<GVariant> attributesOfIdentity(const std::string& identity) {
  AttributeWriter writer;
  writer.add(identityKey, identity.c_str());
  return writer.attributes();
}

GLibPointer<GVariant> attributesOfItem(const KeychainItem& item, bool hasValue,
                                       const std::string& order) {
  AttributeWriter writer(item.itemClass);
  writer.add(identityKey, identityOf(item).c_str());
  writer.add(orderKey, order.c_str());
  writer.add(valueKey, hasValue ? "some" : "none");
  writer.addAll(item.attributes);
  return writer.attributes();
}

ServiceItem itemWithAttributes(std::string path, GLibPointer<GVariant> attributes) {
  ServiceItem result;
  const auto textOf = [&](const char* key) {
    const char* text = nullptr;
    return g_variant_lookup(attributes.get(), key, "&s", &text) ? text : nullptr;
  };
  const char* const itemClass = textOf(classKey);
  const char* const order = textOf(orderKey);
  const char* const value = textOf(valueKey);
  result.isDamaged = !itemClass || !order || !value;
  const bool isKey = itemClass && nameOf(KeychainItemClass::key) == std::string_view(itemClass);
  result.item.itemClass = isKey ? KeychainItemClass::key : KeychainItemClass::genericPassword;
  if (order) result.order = order;
  result.hasValue = value && value == std::string_view("some");
  for (std::size_t i = 0; i < keychainAttributeCount; ++i) {
    const char* const text = textOf(attributeKeys[i]);
    if (!text) continue;
    Value& read = result.item.attributes[static_cast<KeychainAttribute>(i)];
    read = decoded(text);
    if (!mayBe(static_cast<KeychainAttribute>(i), read)) result.isDamaged = true;
  }
  result.path = std::move(path);
  result.attributes = std::move(attributes);
  return result;
}

std::string visibleLabel(const KeychainItem& item) {
  using Attribute = KeychainAttribute;
  std::string text;
  for (const Attribute part : {Attribute::label, Attribute::service, Attribute::account}) {
    const NSString words(item.attributes[part]);
    if (words.empty()) continue;
    text += (text.empty() ? "" : ", ") + words.utf8();
    if (part == Attribute::label) break;
  }
  if (text.empty()) text = nameOf(item.itemClass);
  const GLibPointer<char> valid(g_utf8_make_valid(text.c_str(), -1));
  return valid.get();
}

}  // namespace zeb
