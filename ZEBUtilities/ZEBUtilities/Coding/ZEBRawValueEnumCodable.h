#pragma once

#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBUtilities/Coding/ZEBEncodable.h>
#include <ZEBUtilities/Coding/ZEBUnarchiverError.h>

#include <concepts>
#include <cstdint>
#include <type_traits>

namespace zeb {

/// The keys of an archived enumeration.
struct ZEBRawValueEnumCodableCoderKeys {
  static constexpr char rawValue[] = "rawValue";
};

/// Specialise this for each enumeration that is to be archived, with
///   - `static const char* encodableName()`, which is stored in documents and must never change;
///   - `cases`, a range of all enumerators, or of (enumerator, string) pairs when its raw values
///     are strings. Only listed enumerators can be read back.
template <class Enumeration>
struct ZEBRawValueEnumTraits;

/// Makes an enumeration encodable: archives its raw value under "rawValue".
///
///     enum class Mood : std::int32_t { calm = 1, excited = 2 };
///     template <>
///     struct zeb::ZEBRawValueEnumTraits<Mood> {
///       static const char* encodableName() { return "Mood"; }
///       static constexpr std::array cases{Mood::calm, Mood::excited};
///     };
///     encoder.encodeObject(ZEBRawValueEnumCodable(mood), "mood");
template <class Enumeration>
  requires std::is_enum_v<Enumeration>
class ZEBRawValueEnumCodable {
 public:
  using Traits = ZEBRawValueEnumTraits<Enumeration>;
  using RawInteger = std::underlying_type_t<Enumeration>;
  using CoderKeys = ZEBRawValueEnumCodableCoderKeys;

  ZEBRawValueEnumCodable(Enumeration enumerator) noexcept : enumerator_(enumerator) {}

  /// Throws `missingRequiredData` without a raw value, and `unexpectedContent` when it is not in
  /// `cases`, both with the key "rawValue".
  explicit ZEBRawValueEnumCodable(ZEBDecoder& decoder) : enumerator_(decoded(decoder)) {}

  static NSString encodableName() { return Traits::encodableName(); }

  /// Throws NSException (NSInvalidArgumentException) when the raw values are strings and `cases`
  /// does not list this enumerator, because it could not be read back.
  void encode(ZEBEncoder& encoder) const {
    if constexpr (hasStrings) {
      for (const auto& [enumerator, text] : Traits::cases) {
        if (enumerator == enumerator_)
          return encoder.encodeString(NSString(text), CoderKeys::rawValue);
      }
      raiseInvalidArgument(
          "An enumerator that its ZEBRawValueEnumTraits do not list can't be encoded");
    } else if constexpr (std::same_as<RawInteger, std::int32_t>) {
      encoder.encodeInt32(static_cast<std::int32_t>(enumerator_), CoderKeys::rawValue);
    } else if constexpr (std::same_as<RawInteger, std::uint64_t>) {
      encoder.encodeNumber(static_cast<std::uint64_t>(enumerator_), CoderKeys::rawValue);
    } else {
      encoder.encodeInt64(static_cast<std::int64_t>(enumerator_), CoderKeys::rawValue);
    }
  }

  operator Enumeration() const noexcept { return enumerator_; }
  friend bool operator==(const ZEBRawValueEnumCodable&, const ZEBRawValueEnumCodable&) = default;
  friend bool operator==(const ZEBRawValueEnumCodable& left, Enumeration right) noexcept {
    return left.enumerator_ == right;
  }

 private:
  static constexpr bool hasStrings = requires { Traits::cases[0].second; };

  static Enumeration decoded(ZEBDecoder& decoder) {
    if constexpr (hasStrings) {
      const NSString raw = decoder.decodeStringForKey(CoderKeys::rawValue);
      for (const auto& [enumerator, text] : Traits::cases) {
        if (raw == NSString(text)) return enumerator;
      }
    } else {
      const NSNumber raw = decoder.decodeNumberOptionalForKey(CoderKeys::rawValue);
      if (raw.isNil()) throw ZEBUnarchiverError::missingRequiredData(CoderKeys::rawValue);
      for (const Enumeration enumerator : Traits::cases) {
        if (raw.isEqual(Value(static_cast<RawInteger>(enumerator)))) return enumerator;
      }
    }
    throw ZEBUnarchiverError::unexpectedContent(CoderKeys::rawValue);
  }

  Enumeration enumerator_;
};

}  // namespace zeb
