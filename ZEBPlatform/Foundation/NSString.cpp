#include <ZEBPlatform/Foundation/KeyedHash.h>
#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/UnitSearchPrivate.h>
#include <ZEBPlatform/Foundation/detail/StringBuilding.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>

#include <algorithm>
#include <cstring>

namespace zeb {

namespace detail {

namespace {

StringStorage* newString(std::string_view ascii) {
  StringStorage* storage = newStringStorage<char>(ascii.size());
  if (!ascii.empty()) std::memcpy(contentOf<char>(storage), ascii.data(), ascii.size());
  return storage;
}

StringStorage* newWideString(std::u16string_view units) {
  StringStorage* storage = newStringStorage<char16_t>(units.size());
  std::memcpy(contentOf<char16_t>(storage), units.data(), units.size() * sizeof(char16_t));
  return storage;
}

StringStorage* newString(std::u16string_view units) {
  if (isASCII(units)) {
    StringStorage* storage = newStringStorage<char>(units.size());
    std::transform(units.begin(), units.end(), contentOf<char>(storage),
                   [](char16_t unit) { return static_cast<char>(unit); });
    return storage;
  }
  return newWideString(units);
}

enum class Malformed { replaced, refused };

/// The string of the text; null if it is malformed and that is refused.
template <Malformed malformed>
StringStorage* newStringFromUTF8(std::string_view utf8) {
  if (isASCII(utf8)) return newString(utf8);
  bool isComplete = true;
  const auto decode = [&](char16_t* units) {
    const UnicodeConverter& converter = unicodeConverter();
    if constexpr (malformed == Malformed::replaced) return converter.decode(utf8, units);
    const TextProgress progress = converter.decodeWellFormed(utf8, units);
    isComplete = progress.read == utf8.size();
    return progress.written;
  };
  // Shrinking the allocation of a short text would take longer than copying its units.
  constexpr std::size_t maxCopied = 512;
  if (utf8.size() <= maxCopied) {
    char16_t units[maxCopied];
    const std::size_t length = decode(units);
    return isComplete ? newWideString({units, length}) : nullptr;
  }
  StringStorage* const string = newFilledString<char16_t>(utf8.size(), decode);
  if (isComplete) return string;
  std::free(string);
  return nullptr;
}

std::uint32_t hashOfContent(const StringStorage& string) noexcept {
  if (!string.isWide()) return hashOfUTF8(string.ascii(), string.length);
  const std::u16string_view units(string.units(), string.length);
  std::uint64_t hash = startHash(utf8Length(units));
  const std::uint64_t tail =
      visitUTF8Words(units, [&](std::uint64_t word) { hash = mixHash(hash, word); });
  return finishHash(mixHash(hash, tail));
}

}  // namespace

std::uint32_t computeHash(const StringStorage& string) noexcept {
  const std::uint32_t hash = hashOfContent(string);
  if (!string.isMutable()) string.hash.store(hash, std::memory_order_relaxed);
  return hash;
}

bool equalStrings(const StringStorage& left, const StringStorage& right) noexcept {
  if (&left == &right) return true;
  if (left.length != right.length) return false;
  if (left.isWide() == right.isWide()) {
    const std::size_t width = left.isWide() ? sizeof(char16_t) : sizeof(char);
    return std::memcmp(left.ascii(), right.ascii(), left.length * width) == 0;
  }
  // A mutable text may hold plain ASCII in wide units.
  const StringStorage& narrow = left.isWide() ? right : left;
  const StringStorage& wide = left.isWide() ? left : right;
  return std::equal(narrow.ascii(), narrow.ascii() + narrow.length, wide.units(),
                    [](char byte, char16_t unit) { return static_cast<char16_t>(byte) == unit; });
}

void MutableStringStorage::contentsChanged() noexcept {
  const bool isWideNow = flags & StorageWide;
  data = isWideNow ? static_cast<const void*>(wide.data()) : narrow.data();
  length = static_cast<std::uint32_t>(isWideNow ? wide.size() : narrow.size());
}

}  // namespace detail

namespace {

/// The order by units as a negative number, 0 or a positive one. Narrow text is ASCII.
template <class Left, class Right>
int compareUnits(Left left, Right right) noexcept {
  if constexpr (std::same_as<Left, Right>) {
    return left.compare(right);
  } else {
    const auto [one, other] = std::mismatch(left.begin(), left.end(), right.begin(), right.end());
    if (one == left.end() || other == right.end())
      return (one != left.end()) - (other != right.end());
    return *one < *other ? -1 : 1;
  }
}

/// Calls `use` with the stored units of the two strings, as views of bytes or of 16-bit units.
template <class Use>
auto withUnits(const NSString& left, const NSString& right, const Use& use) noexcept {
  const auto withLeft = [&](auto units) {
    return right.isASCII() ? use(units, right.asciiView()) : use(units, right.utf16View());
  };
  return left.isASCII() ? withLeft(left.asciiView()) : withLeft(left.utf16View());
}

}  // namespace

// The text constructors of `Value` need the string storage.
Value::Value(std::string_view utf8)
    : Value(adoptStorage, detail::newStringFromUTF8<detail::Malformed::replaced>(utf8)) {}
Value::Value(const char* utf8) : Value(utf8 ? Value(std::string_view(utf8)) : Value()) {}

NSString StringKey::string() const {
  if (isNil()) return nullptr;
  if (!storage()) return NSString(std::string_view(utf8_, length_));
  auto* own = const_cast<detail::StringStorage*>(storage());
  detail::retainStorage(own);
  return NSString(Value(Value::adoptStorage, own));
}

std::uint64_t StringKey::keyedHash() const noexcept {
  return storage() ? detail::keyedHash(*storage()) : detail::keyedHash({utf8_, length_});
}

bool StringKey::matchesWide(const detail::StringStorage& candidate) const noexcept {
  if (storage()) return detail::equalStrings(*storage(), candidate);
  const std::u16string_view units(candidate.units(), candidate.length);
  std::string_view rest(utf8_, length_);
  for (std::size_t index = 0; index < units.size();) {
    const detail::EncodedScalar encoded = detail::encodeUTF8(detail::nextScalar(units, index));
    if (!rest.starts_with(encoded.view())) return false;
    rest.remove_prefix(encoded.length);
  }
  return rest.empty();
}

NSString::NSString(std::u16string_view units) : Value(adoptStorage, detail::newString(units)) {}

NSString NSString::stringWithUTF8(std::string_view bytes) {
  detail::StringStorage* const string =
      detail::newStringFromUTF8<detail::Malformed::refused>(bytes);
  return string ? detail::adoptString(string) : nullptr;
}

char16_t NSString::characterAtIndex(std::size_t index) const {
  if (isNil()) return 0;
  if (index >= length()) raiseRange(index, length());
  return text().isWide() ? text().units()[index] : static_cast<char16_t>(text().ascii()[index]);
}

std::string NSString::utf8() const {
  std::string utf8(asciiView());
  if (!isNil() && text().isWide()) detail::appendUTF8(utf8, utf16View());
  return utf8;
}

std::u16string NSString::utf16() const {
  if (!isNil() && text().isWide()) return std::u16string(utf16View());
  const std::string_view ascii = asciiView();
  return std::u16string(ascii.begin(), ascii.end());
}

bool NSString::isWellFormed() const noexcept {
  const std::u16string_view units = utf16View();
  for (std::size_t index = 0; index < units.size();) {
    const char32_t scalar = detail::nextScalar(units, index);
    if (scalar < 0x10000 && detail::isSurrogate(static_cast<char16_t>(scalar))) return false;
  }
  return true;
}

NSComparisonResult NSString::compare(const NSString& other) const noexcept {
  const auto result = [](auto order) {
    return order < 0 ? NSOrderedAscending : order > 0 ? NSOrderedDescending : NSOrderedSame;
  };
  if (isNil() || other.isNil()) {
    return result(static_cast<int>(!isNil()) - static_cast<int>(!other.isNil()));
  }
  return result(
      withUnits(*this, other, [](auto own, auto others) { return compareUnits(own, others); }));
}

bool NSString::hasPrefix(const NSString& prefix) const noexcept {
  if (prefix.length() == 0 || prefix.length() > length()) return false;
  return withUnits(*this, prefix, [](auto own, auto part) {
    return compareUnits(own.substr(0, part.size()), part) == 0;
  });
}

bool NSString::hasSuffix(const NSString& suffix) const noexcept {
  if (suffix.length() == 0 || suffix.length() > length()) return false;
  return withUnits(*this, suffix, [](auto own, auto part) {
    return compareUnits(own.substr(own.size() - part.size()), part) == 0;
  });
}

bool NSString::containsString(const NSString& part) const noexcept {
  return rangeOfString(part).location != NSNotFound;
}

NSRange NSString::rangeOfString(const NSString& part) const noexcept {
  if (part.length() == 0 || part.length() > length()) return {NSNotFound, 0};
  const std::size_t place = withUnits(
      *this, part, [](auto own, auto wanted) { return detail::placeOfPattern(own, wanted); });
  if (place == std::string_view::npos) return {NSNotFound, 0};
  return {place, part.length()};
}

NSString NSString::substringWithRange(NSRange range) const {
  if (isNil()) return nullptr;
  requireRange(range, length());
  if (text().isWide()) return NSString(utf16View().substr(range.location, range.length));
  return NSString(asciiView().substr(range.location, range.length));
}

NSString NSString::substringFromIndex(std::size_t index) const {
  if (!isNil() && index > length()) raiseRange(index, length());
  return substringWithRange({index, length() - index});
}

NSString NSString::substringToIndex(std::size_t index) const {
  return substringWithRange({0, index});
}

NSString NSString::stringByAppendingString(const NSString& other) const {
  if (isNil()) return nullptr;
  if (isASCII() && (other.isNil() || other.isASCII())) {
    return NSString(std::string(asciiView()).append(other.asciiView()));
  }
  return NSString(std::u16string_view(utf16() + other.utf16()));
}

NSArray NSString::componentsSeparatedByString(const NSString& separator) const {
  if (isNil()) return nullptr;
  NSMutableArray pieces;
  const std::u16string units = utf16();
  const std::u16string separating = separator.utf16();
  const std::u16string_view between = separating;
  std::u16string_view rest = units;
  for (std::size_t place = 0;
       !between.empty() && (place = detail::placeOfPattern(rest, between)) != rest.npos;) {
    pieces.addObject(NSString(rest.substr(0, place)));
    rest.remove_prefix(place + between.size());
  }
  pieces.addObject(NSString(rest));
  return pieces.copy();
}

NSMutableString NSString::mutableCopy() const {
  return isNil() ? NSMutableString(nullptr) : NSMutableString(*this);
}

NSMutableString::NSMutableString()
    : NSString(static_cast<detail::Storage*>(new detail::MutableStringStorage)) {}

NSMutableString::NSMutableString(const NSString& string) : NSMutableString() {
  appendString(string);
}

NSMutableString NSMutableString::from(const Value& value) noexcept {
  NSMutableString result(nullptr);
  if (value.isString() && value.isMutable()) static_cast<Value&>(result) = value;
  return result;
}

NSMutableString& NSMutableString::appendString(const NSString& string) {
  replaceCharactersInRange({length(), 0}, string);
  return *this;
}

NSMutableString& NSMutableString::appendUTF8(std::string_view utf8) {
  return appendString(NSString(utf8));
}

void NSMutableString::setString(const NSString& string) {
  replaceCharactersInRange({0, length()}, string);
}

void NSMutableString::replaceCharactersInRange(NSRange range, const NSString& replacement) {
  if (isNil()) return;
  requireRange(range, length());
  const NSString own = replacement.copy();  // the replacement may be this text itself
  detail::MutableStringStorage& text = contents();
  if (length() - range.length + replacement.length() > UINT32_MAX) {
    throw std::length_error("string too long");
  }
  if (range.length == length()) {
    text.clear();
    range = {0, 0};
  }
  const bool staysNarrow = !text.isWide() && (own.isNil() || own.isASCII());
  if (staysNarrow) {
    text.narrow.replace(range.location, range.length, std::string(own.asciiView()));
  } else {
    const std::u16string units = own.utf16();
    if (!text.isWide()) {
      text.wide.assign(text.narrow.begin(), text.narrow.end());
      text.narrow = std::string();
      text.flags |= detail::StorageWide;
    }
    text.wide.replace(range.location, range.length, units);
  }
  text.contentsChanged();
}

}  // namespace zeb
