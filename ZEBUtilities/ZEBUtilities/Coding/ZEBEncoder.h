#pragma once

#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/StringKey.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Geometry/CGGeometry.h>

#include <cstdint>

namespace zeb {

/// Defined in <ZEBUtilities/Coding/ZEBEncodable.h>.
template <class T>
Value encodableObject(const T& object);

/// The interface to which an object writes its fields, each under its own key. Each object has
/// separate keys, and none of them can collide with the document's reserved keys.
///
/// A nil string, number or object writes nothing, so that its key is absent when read back. If a
/// key is written twice, the later value counts. An encoder is valid only during the `encode` call
/// that it is passed to.
class ZEBEncoder {
 public:
  virtual ~ZEBEncoder() = default;

  /// Any value, encodable object, array or dictionary.
  virtual void encodeObject(const Value& object, const StringKey& forKey) = 0;
  /// The same for static types: all that `encodableValue` in <ZEBUtilities/Coding/ZEBEncodable.h>
  /// takes.
  template <class T>
  void encodeObject(const T& object, const StringKey& forKey) {
    const Value value = encodableObject(object);
    encodeObject(value, forKey);
  }

  virtual void encodeString(const NSString& string, const StringKey& forKey) = 0;
  virtual void encodeNumber(const NSNumber& number, const StringKey& forKey) = 0;
  virtual void encodeBool(bool boolean, const StringKey& forKey) = 0;
  virtual void encodeInt(std::int64_t integer, const StringKey& forKey) = 0;
  virtual void encodeInt32(std::int32_t integer, const StringKey& forKey) = 0;
  virtual void encodeInt64(std::int64_t integer, const StringKey& forKey) = 0;
  virtual void encodeFloat(float number, const StringKey& forKey) = 0;
  virtual void encodeDouble(double number, const StringKey& forKey) = 0;
  virtual void encodeCGRect(const CGRect& rect, const StringKey& forKey) = 0;
  virtual void encodeCGPoint(const CGPoint& point, const StringKey& forKey) = 0;
  virtual void encodeCGSize(const CGSize& size, const StringKey& forKey) = 0;
  virtual void encodeRange(const NSRange& range, const StringKey& forKey) = 0;
};

}  // namespace zeb
