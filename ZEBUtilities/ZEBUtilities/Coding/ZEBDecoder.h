#pragma once

#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/StringKey.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Geometry/CGGeometry.h>

#include <cstdint>

namespace zeb {

class ZEBDecoder;

/// Defined in <ZEBUtilities/Coding/ZEBDecodedValue.h>.
template <class T>
T decodeTyped(ZEBDecoder& decoder, const StringKey& key);

/// The interface from which an object reads its fields. Throws `ZEBUnarchiverError`.
///
/// Functions without a default throw `missingRequiredData` for an absent key. Functions with a
/// default or with `Optional` in their name return the default or nil. All throw
/// `unexpectedDataType` for a value of another kind, and `unexpectedContent` for one that is no
/// archived value. Numbers convert as the readings of `Value` do. A decoder is valid only during
/// the call that it is passed to.
class ZEBDecoder {
 public:
  virtual ~ZEBDecoder() = default;

  /// Any value: strings, numbers, data, dates, arrays, dictionaries, boxed records, and objects
  /// that a registered builder made.
  virtual Value decodeObjectForKey(const StringKey& key) = 0;
  /// The same as a static type, converted by `decodedValueAs`. Include
  /// <ZEBUtilities/Coding/ZEBDecodedValue.h> for it. A `std::optional` is empty for an absent key.
  template <class T>
  T decodeObjectForKey(const StringKey& key) {
    return decodeTyped<T>(*this, key);
  }

  virtual NSString decodeStringForKey(const StringKey& key) = 0;
  virtual NSString decodeStringForKey(const StringKey& key, const NSString& defaultValue) = 0;
  virtual NSString decodeStringOptionalForKey(const StringKey& key) = 0;
  virtual NSNumber decodeNumberForKey(const StringKey& key, const NSNumber& defaultValue) = 0;
  virtual NSNumber decodeNumberOptionalForKey(const StringKey& key) = 0;
  virtual bool decodeBoolForKey(const StringKey& key) = 0;
  virtual bool decodeBoolForKey(const StringKey& key, bool defaultValue) = 0;
  virtual std::int64_t decodeIntForKey(const StringKey& key) = 0;
  virtual std::int64_t decodeIntForKey(const StringKey& key, std::int64_t defaultValue) = 0;
  virtual std::int32_t decodeInt32ForKey(const StringKey& key) = 0;
  virtual std::int32_t decodeInt32ForKey(const StringKey& key, std::int32_t defaultValue) = 0;
  virtual std::int64_t decodeInt64ForKey(const StringKey& key) = 0;
  virtual std::int64_t decodeInt64ForKey(const StringKey& key, std::int64_t defaultValue) = 0;
  virtual float decodeFloatForKey(const StringKey& key) = 0;
  virtual float decodeFloatForKey(const StringKey& key, float defaultValue) = 0;
  virtual double decodeDoubleForKey(const StringKey& key) = 0;
  virtual double decodeDoubleForKey(const StringKey& key, double defaultValue) = 0;
  virtual CGRect decodeCGRectForKey(const StringKey& key) = 0;
  virtual CGRect decodeCGRectForKey(const StringKey& key, const CGRect& defaultValue) = 0;
  virtual CGPoint decodeCGPointForKey(const StringKey& key) = 0;
  virtual CGPoint decodeCGPointForKey(const StringKey& key, const CGPoint& defaultValue) = 0;
  virtual CGSize decodeCGSizeForKey(const StringKey& key) = 0;
  virtual CGSize decodeCGSizeForKey(const StringKey& key, const CGSize& defaultValue) = 0;
  virtual NSRange decodeRangeForKey(const StringKey& key) = 0;
  virtual NSRange decodeRangeForKey(const StringKey& key, const NSRange& defaultValue) = 0;

  /// Whether anything is stored under the key.
  virtual bool containsValueForKey(const StringKey& key) const = 0;
};

}  // namespace zeb
