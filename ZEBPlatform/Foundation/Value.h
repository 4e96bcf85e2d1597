#pragma once

#include <ZEBPlatform/Foundation/ValueStorage.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

namespace zeb {

class NSString;

/// One value of the dynamically typed family that JSON, property lists and archives are made of:
/// string, number, array, dictionary, set, ordered set, data, date, URL, the null marker, any
/// `NSObject`, or nil.
///
/// A value has 16 bytes and is cheap to copy: numbers, dates and null lie inside, everything else
/// is shared and counts its references. `NSString`, `NSNumber`, `NSArray`, `NSDictionary` and the
/// others are this same class with the operations of one kind; such a handle made from a value of
/// another kind is nil.
///
/// Nil is neither null (the marker) nor empty. Every query on nil answers false, zero or nil, and
/// `if (value)` asks whether the value is there, not whether it is true.
///
/// Immutable values may be used from any number of threads. A mutable one belongs to one thread at
/// a time. One `Value` object must not be assigned on one thread while another reads it. Freeing a
/// tree takes no memory and does not recurse, however large and deep it is.
class Value {
 public:
  using Kind = ValueKind;

  constexpr Value() noexcept = default;
  constexpr Value(std::nullptr_t) noexcept {}

  Value(std::same_as<bool> auto boolean) noexcept
      : head_(headOf(Kind::Boolean, 'c')), payload_(boolean ? 1u : 0u) {}

  /// Remembers the width of its C type as type code (`NSNumber::objCType`).
  template <std::integral Integer>
    requires(!std::same_as<Integer, bool> && !std::same_as<Integer, char16_t> &&
             !std::same_as<Integer, char32_t> && !std::same_as<Integer, wchar_t>)
  Value(Integer integer) noexcept
      : head_(headOf(std::is_signed_v<Integer> ? Kind::SignedInteger : Kind::UnsignedInteger,
                     typeCodeOf<Integer>())),
        payload_(static_cast<std::uint64_t>(integer)) {}

  Value(float number) noexcept;
  Value(double number) noexcept;

  /// UTF-8 text. Malformed sequences become U+FFFD, except that the three-byte forms of surrogates
  /// become these surrogates. A null pointer makes nil.
  Value(const char* utf8);
  Value(std::string_view utf8);
  Value(const std::string& utf8) : Value(std::string_view(utf8)) {}

  /// Wraps an object; a nil reference makes nil.
  template <std::derived_from<NSObject> T>
  Value(Ref<T> object) noexcept : Value(adoptObject, object.leak()) {}

  Value(const Value& other) noexcept : head_(other.head_), payload_(other.payload_) {
    if (isCounted()) retainPayload();
  }
  Value(Value&& other) noexcept
      : head_(std::exchange(other.head_, 0)), payload_(std::exchange(other.payload_, 0)) {}
  ~Value() {
    if (isCounted()) releasePayload();
  }
  // Only variables can be assigned to: `dictionary["key"] = 1` would change nothing.
  Value& operator=(const Value& other) & noexcept {
    Value copy(other);
    swap(copy);
    return *this;
  }
  Value& operator=(Value&& other) & noexcept {
    Value moved(std::move(other));
    swap(moved);
    return *this;
  }
  void swap(Value& other) noexcept {
    std::swap(head_, other.head_);
    std::swap(payload_, other.payload_);
  }

  Kind kind() const noexcept { return static_cast<Kind>(head_ & 0xFF); }
  bool isNil() const noexcept { return (head_ & 0xFF) == 0; }
  explicit operator bool() const noexcept { return !isNil(); }

  bool isNull() const noexcept { return kind() == Kind::Null; }
  bool isNumber() const noexcept { return kind() >= Kind::Boolean && kind() <= Kind::Double; }
  bool isBoolean() const noexcept { return kind() == Kind::Boolean; }
  bool isDate() const noexcept { return kind() == Kind::Date; }
  bool isString() const noexcept { return kind() == Kind::String; }
  bool isData() const noexcept { return kind() == Kind::Data; }
  bool isURL() const noexcept { return kind() == Kind::URL; }
  bool isArray() const noexcept { return kind() == Kind::Array; }
  bool isDictionary() const noexcept { return kind() == Kind::Dictionary; }
  bool isSet() const noexcept { return kind() == Kind::Set; }
  bool isOrderedSet() const noexcept { return kind() == Kind::OrderedSet; }
  bool isObject() const noexcept { return kind() == Kind::Object; }
  /// Whether the shared value can be changed through a mutable handle.
  bool isMutable() const noexcept {
    return isCounted() && kind() != Kind::Object && storage()->isMutable();
  }

  /// True of strings and numbers, which alone answer the six numeric readings.
  bool respondsToNumericReadings() const noexcept { return isString() || isNumber(); }

  /// The numeric readings; 0 or false for values that do not respond to them. A string is read by
  /// its leading number: white space, sign, decimal digits; integers saturate at the limits of the
  /// result. `boolValue` of a string is true for a leading Y, y, T, t or, after sign and zeros, a
  /// digit 1-9. Numbers convert as in C where that is defined: integers wrap to the narrower width,
  /// and doubles saturate (not-a-number reads as 0).
  bool boolValue() const noexcept;
  std::int32_t intValue() const noexcept;
  std::int64_t integerValue() const noexcept { return longLongValue(); }
  std::int64_t longLongValue() const noexcept {
    const bool isInteger = kind() >= Kind::Boolean && kind() <= Kind::UnsignedInteger;
    return isInteger ? static_cast<std::int64_t>(payload_) : convertedInteger();
  }
  float floatValue() const noexcept;
  double doubleValue() const noexcept;

  /// Equality of content: numbers across type codes, strings by units, collections by elements,
  /// objects by their own `isEqual`, except that each object is equal to itself. Nil is equal to
  /// nothing, not even to nil. Subtrees that are shared are compared as often as they occur.
  ///
  /// Works to any nesting depth without recursion. Collections used as dictionary keys or set
  /// members are compared 64 levels deep and count as different below. Takes memory only for
  /// collections that are nested more than 32 levels deep, and to join data of several ranges;
  /// throws std::bad_alloc if there is none.
  bool isEqual(const Value& other) const;

  /// The same shared value; for inline kinds, the same kind and bits. Nil is identical to nil.
  bool isIdenticalTo(const Value& other) const noexcept;

  /// As `isEqual`, but nil equals nil: the equality that C++ containers need.
  friend bool operator==(const Value& left, const Value& right) {
    return left.isNil() ? right.isNil() : left.isEqual(right);
  }

  /// Equal values have equal hashes. Covers the content of collections down to four levels, the two
  /// ends of data of more than 128 bytes, and the hash that an object computes itself.
  ///
  /// Fast and, objects excepted, the same in every process. An attacker who chooses the values can
  /// therefore make them collide; the tables of this library detect that and change to the secret
  /// hash that `std::hash<Value>` gives. Throws std::bad_alloc if data of several ranges cannot be
  /// joined.
  std::size_t hash() const;

  /// An immutable value with this content: an immutable value itself, a mutable one's snapshot (its
  /// elements are shared).
  [[nodiscard]] Value copy() const;

  /// A new mutable value with this content for strings, arrays, dictionaries, sets of both kinds
  /// and data; other kinds are answered as they are. Elements are shared.
  [[nodiscard]] Value mutableCopy() const;

  /// An equal tree that owns all its memory. Values read from one JSON document share the memory of
  /// the document, so one kept string keeps all of it: detach the values that outlive the rest.
  /// Mutable collections become immutable; objects are shared; collections that are dictionary keys
  /// within each other are detached 64 levels deep. Throws std::bad_alloc if there is no memory for
  /// the copy.
  [[nodiscard]] Value detachedCopy() const;

  /// The object of an object value when its class is `T` or derived from it, else nil.
  template <std::derived_from<NSObject> T = NSObject>
  Ref<T> object() const noexcept {
    return Ref<T>(dynamic_cast<T*>(objectPointer()));
  }

  /// Text for people and logs, as "%@" prints it: strings without quotes, collections over several
  /// lines with four spaces a level (up to 32 levels), nil as "(null)". Nesting is printed 512
  /// levels deep, then as "…".
  NSString description() const;

  // For the other modules of the library, which build values with the following.

  enum AdoptObject { adoptObject };
  Value(AdoptObject, NSObject* object) noexcept
      : head_(object ? static_cast<std::uint64_t>(Kind::Object) : 0),
        payload_(reinterpret_cast<std::uint64_t>(object)) {}

  /// Takes over one reference to `storage`.
  enum AdoptStorage { adoptStorage };
  Value(AdoptStorage, detail::Storage* storage) noexcept
      : head_(static_cast<std::uint64_t>(storage->kind)),
        payload_(reinterpret_cast<std::uint64_t>(storage)) {}

  /// Raw words of a value, whose reference (if it has one) is taken over.
  enum AdoptWords { adoptWords };
  constexpr Value(AdoptWords, std::uint64_t head, std::uint64_t payload) noexcept
      : head_(head), payload_(payload) {}

  static constexpr std::uint64_t headOf(Kind kind, char typeCode = 0) noexcept {
    return static_cast<std::uint64_t>(kind) | std::uint64_t{static_cast<unsigned char>(typeCode)}
                                                  << 8;
  }
  /// The head of a key in a dictionary, which has its hash and no type code.
  static constexpr std::uint64_t headOfKey(Kind kind, std::uint32_t hash) noexcept {
    return static_cast<std::uint64_t>(kind) | std::uint64_t{hash} << 32;
  }
  static constexpr bool isCountedHead(std::uint64_t head) noexcept { return head & 0x10; }

  bool isCounted() const noexcept { return isCountedHead(head_); }
  char typeCode() const noexcept { return static_cast<char>(head_ >> 8); }
  std::uint64_t head() const noexcept { return head_; }
  std::uint64_t payload() const noexcept { return payload_; }
  detail::Storage* storage() const noexcept { return reinterpret_cast<detail::Storage*>(payload_); }
  template <class StorageType>
  StorageType* storageAs() const noexcept {
    return static_cast<StorageType*>(storage());
  }
  NSObject* objectPointer() const noexcept {
    return isObject() ? reinterpret_cast<NSObject*>(payload_) : nullptr;
  }

  /// Whether this value is the only reference to its content, so that the content may be taken
  /// apart.
  bool isUniquelyReferenced() const noexcept {
    if (isObject()) return objectPointer()->isUniquelyReferenced();
    return isCounted() && !(storage()->flags & detail::StorageInArena) &&
           storage()->countOrOffset.load(std::memory_order_acquire) == 1;
  }

  /// The 32-bit hash that a dictionary keeps in its keys; 0 when this value is not such a key.
  std::uint32_t keyHash() const noexcept { return static_cast<std::uint32_t>(head_ >> 32); }
  void setKeyHash(std::uint32_t hash) noexcept {
    head_ = (head_ & 0xFFFFFFFFu) | std::uint64_t{hash} << 32;
  }

 private:
  template <class Integer>
  static constexpr char typeCodeOf() noexcept {
    constexpr char codes[] = {'c', 's', 'i', 'q'};
    constexpr std::size_t width = sizeof(Integer) == 1   ? 0
                                  : sizeof(Integer) == 2 ? 1
                                  : sizeof(Integer) == 4 ? 2
                                                         : 3;
    return std::is_signed_v<Integer> ? codes[width] : static_cast<char>(codes[width] - 'a' + 'A');
  }

  /// The 64-bit reading of values that are not integers.
  std::int64_t convertedInteger() const noexcept;

  void retainPayload() const noexcept {
    if (kind() == Kind::Object) {
      objectPointer()->retain();
    } else {
      detail::retainStorage(storage());
    }
  }
  void releasePayload() const noexcept {
    if (kind() == Kind::Object) {
      objectPointer()->release();
    } else {
      detail::releaseStorage(storage());
    }
  }

  // Two words, each written at once: the kind in the lowest byte, the type code of a number in the
  // next, the hash of a dictionary key in the upper half.
  std::uint64_t head_ = 0;
  std::uint64_t payload_ = 0;
};

static_assert(sizeof(Value) == 16);

namespace detail {

/// A value or a handle of another kind, from which a handle of this kind can be made. Types that
/// only convert to a value are excluded because their kind is known: `NSString(5)` would always be
/// nil.
template <class Source, class Handle>
concept ValueBeside = std::derived_from<Source, Value> && !std::derived_from<Source, Handle>;

/// A hash of all content, 512 levels deep, under a secret key of the process (see KeyedHash.h). For
/// an object it is derived from the hash that the object computes itself.
std::uint64_t keyedHashOf(const Value& value);

}  // namespace detail

/// Prints the description, as UTF-8.
std::ostream& operator<<(std::ostream& stream, const Value& value);

}  // namespace zeb

/// The hash of all values and handles. Covers all content under a key that differs from process to
/// process, so that an attacker cannot choose values that collide in a standard container.
template <std::derived_from<zeb::Value> Handle>
struct std::hash<Handle> {
  std::size_t operator()(const Handle& value) const { return zeb::detail::keyedHashOf(value); }
};
