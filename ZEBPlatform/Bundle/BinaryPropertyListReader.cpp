#include <ZEBPlatform/Bundle/NSPropertyListSerialization.h>
#include <ZEBPlatform/Bundle/PropertyListBuilderPrivate.h>
#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <string>
#include <utility>

namespace zeb::detail {

namespace {

constexpr std::size_t headerSize = 8;    // "bplist00"
constexpr std::size_t trailerSize = 32;  // the last bytes: widths, counts, offsets

constexpr const char* damaged = "its tables are damaged";
constexpr const char* unknown = "it holds an object of unknown kind";

/// Walks the objects from the root, and shared ones each time they are referred to. The number of
/// visits and the total of text and data are limited, because a few objects can refer to each other
/// very often.
class Reader {
 public:
  Reader(std::string_view document, bool keepsMutable)
      : document_(document),
        builder_(std::min(document.size(), NSPropertyListMaximumObjectCount), keepsMutable),
        maxPayload_(document.size() * NSPropertyListMaximumExpansion) {}

  PropertyListReading read() {
    readTrailer();
    if (!builder_.hasFault()) readObject(root_);
    while (!builder_.hasFault() && !open_.empty()) {
      Container& container = open_.back();
      if (container.left == 0) {
        open_.pop_back();
        builder_.closeCollection();
        continue;
      }
      --container.left;
      const std::uint64_t reference = container.place;
      container.place += referenceWidth_;
      if (container.valuesAhead > 0) readKey(number(reference, referenceWidth_));
      readObject(number(reference + container.valuesAhead, referenceWidth_));
    }
    return builder_.finish();
  }

 private:
  struct Container {
    std::uint64_t place;        ///< offset of the next reference: a key's in a dictionary
    std::uint64_t left;         ///< elements or entries that are still to be read
    std::uint64_t valuesAhead;  ///< bytes from a key's reference to its value's; 0 in an array
  };
  struct Object {
    std::uint64_t place;
    unsigned kind;
    unsigned size;
  };

  unsigned byteAt(std::uint64_t place) const noexcept {
    return static_cast<std::uint8_t>(document_[place]);
  }
  std::uint64_t number(std::uint64_t place, std::uint64_t width) const noexcept {
    std::uint64_t value = 0;
    for (std::uint64_t i = 0; i < width; ++i) value = value << 8 | byteAt(place + i);
    return value;
  }
  void fail(const char* fault) noexcept { builder_.fail(fault); }

  void readTrailer() noexcept {
    if (document_.size() < headerSize + trailerSize) return fail("it is cut short");
    const std::uint64_t trailer = document_.size() - trailerSize;
    offsetWidth_ = byteAt(trailer + 6);
    referenceWidth_ = byteAt(trailer + 7);
    count_ = number(trailer + 8, 8);
    root_ = number(trailer + 16, 8);
    offsets_ = number(trailer + 24, 8);
    const bool isSound = offsetWidth_ >= 1 && offsetWidth_ <= 8 && referenceWidth_ >= 1 &&
                         referenceWidth_ <= 8 && offsets_ > headerSize && offsets_ <= trailer &&
                         count_ <= (trailer - offsets_) / offsetWidth_;
    if (!isSound) fail(damaged);
  }

  /// The object's offset and the two halves of its first byte. The offset is 0 after a fault.
  Object objectAt(std::uint64_t index) noexcept {
    const std::uint64_t place =
        index < count_ ? number(offsets_ + index * offsetWidth_, offsetWidth_) : 0;
    if (place >= headerSize && place < offsets_) {
      return {place, byteAt(place) >> 4, byteAt(place) & 0xF};
    }
    fail(damaged);
    return {};
  }

  void readKey(std::uint64_t index) {
    const Object object = objectAt(index);
    if (object.place == 0) return;
    if (object.kind != 0x5 && object.kind != 0x6) return fail("it has a key that is no string");
    const Value key = sizedLeaf(object);
    if (!key.isNil()) builder_.setKey(NSString(key));
  }

  void readObject(std::uint64_t index) {
    const Object object = objectAt(index);
    if (object.place == 0) return;
    if (object.kind == 0xA || object.kind == 0xD) return openContainer(object);
    Value value = object.kind >= 0x4 && object.kind <= 0x6 ? sizedLeaf(object) : fixedLeaf(object);
    if (!value.isNil()) builder_.add(std::move(value));
  }

  void openContainer(const Object& object) {
    const bool isDictionary = object.kind == 0xD;
    const auto [begin, count] =
        partsOf(object, isDictionary ? 2 * referenceWidth_ : referenceWidth_);
    if (builder_.hasFault()) return;
    isDictionary ? builder_.openDictionary() : builder_.openArray();
    // All keys come first, then all values.
    if (!builder_.hasFault()) {
      open_.push_back({begin, count, isDictionary ? count * referenceWidth_ : 0});
    }
  }

  /// Offset and number of an object's parts. A large number is stored in a separate integer.
  std::pair<std::uint64_t, std::uint64_t> partsOf(const Object& object, std::uint64_t partWidth) {
    std::uint64_t begin = object.place + 1;
    std::uint64_t count = object.size;
    bool isSound = true;
    if (count == 0xF) {
      const unsigned marker = begin < offsets_ ? byteAt(begin) : 0;
      const std::uint64_t width = std::uint64_t{1} << (marker & 0xF);
      isSound = marker >> 4 == 0x1 && width <= 8 && offsets_ - begin > width;
      if (isSound) count = number(begin + 1, width);
      begin += 1 + width;
    }
    if (!isSound || count > (offsets_ - begin) / partWidth) {
      fail(damaged);
      return {};
    }
    return {begin, count};
  }

  /// Data or a string; nil after a fault.
  Value sizedLeaf(const Object& object) {
    const std::uint64_t unitWidth = object.kind == 0x6 ? 2 : 1;
    const auto [begin, count] = partsOf(object, unitWidth);
    payload_ += count * unitWidth;
    if (payload_ > maxPayload_) fail("it contains too much text or data");
    if (builder_.hasFault()) return nullptr;
    const std::string_view bytes = document_.substr(begin, count * unitWidth);
    if (object.kind == 0x4) return NSData::dataWithBytes(bytes);
    if (object.kind == 0x5) {
      // The format says ASCII, but some writers store UTF-8.
      Value string = NSString::stringWithUTF8(bytes);
      if (string.isNil()) fail("it has a text that is neither ASCII nor UTF-8");
      return string;
    }
    std::u16string units(count, u'\0');
    for (std::uint64_t i = 0; i < count; ++i) {
      units[i] = static_cast<char16_t>(number(begin + 2 * i, 2));
    }
    return NSString(units);
  }

  /// An object whose size follows from its first byte; nil after a fault.
  Value fixedLeaf(const Object& object) {
    const std::uint64_t begin = object.place + 1;
    const bool isReference = object.kind == 0x8;
    const std::uint64_t length = object.kind == 0x0 ? 0
                                 : isReference      ? object.size + 1
                                                    : std::uint64_t{1} << object.size;
    if (length > offsets_ - begin) {
      fail(damaged);
      return nullptr;
    }
    if (object.kind == 0x0 && (object.size == 8 || object.size == 9)) return object.size == 9;
    if (object.kind == 0x1 && length <= 16) return integerAt(begin, length);
    if (object.kind == 0x2 && length == 4) {
      return double{std::bit_cast<float>(static_cast<std::uint32_t>(number(begin, 4)))};
    }
    if (object.kind == 0x2 && length == 8) return std::bit_cast<double>(number(begin, 8));
    if (object.kind == 0x3 && length == 8) return dateAt(begin);
    if (isReference && length <= 8) return NSDictionary{{"CF$UID", number(begin, length)}};
    fail(unknown);
    return nullptr;
  }

  /// Up to four bytes are unsigned, more are signed.
  Value integerAt(std::uint64_t begin, std::uint64_t length) {
    const std::uint64_t low = number(begin + length - std::min<std::uint64_t>(length, 8),
                                     std::min<std::uint64_t>(length, 8));
    const auto asSigned = static_cast<std::int64_t>(low);
    if (length <= 8) return asSigned;
    const std::uint64_t high = number(begin, 8);
    if (high == 0) return asSigned < 0 ? Value(low) : Value(asSigned);
    if (high == UINT64_MAX && asSigned < 0) return asSigned;
    fail("it has an integer beyond 64 bits");
    return nullptr;
  }

  Value dateAt(std::uint64_t begin) {
    const double seconds = std::bit_cast<double>(number(begin, 8));
    if (std::isfinite(seconds)) return NSDate::dateWithTimeIntervalSinceReferenceDate(seconds);
    fail("it has an invalid date");
    return nullptr;
  }

  std::string_view document_;
  PropertyListBuilder builder_;
  const std::uint64_t maxPayload_;
  std::uint64_t offsetWidth_ = 0;
  std::uint64_t referenceWidth_ = 0;
  std::uint64_t count_ = 0;
  std::uint64_t root_ = 0;
  std::uint64_t offsets_ = 0;  ///< where the table of offsets begins and the objects end
  std::uint64_t payload_ = 0;
  std::vector<Container> open_;
};

}  // namespace

PropertyListReading readBinaryPropertyList(std::string_view document, bool keepsMutable) {
  return Reader(document, keepsMutable).read();
}

}  // namespace zeb::detail
