#pragma once

#include <ZEBPlatform/Foundation/NSNumber.h>
#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/StringKey.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Geometry/CGGeometry.h>
#include <ZEBPlatform/Memory/FunctionView.h>

#include <cstdint>

namespace zeb {

class ZEBEncoder;

namespace detail {

class EncodableBox;

/// Takes one value, part after part, from `writeParts`.
class ValueSink {
 public:
  /// Nil throws NSException (NSInvalidArgumentException), because only elements are written so.
  virtual void value(const Value& value) = 0;
  virtual void object(const EncodableBox& object) = 0;
  /// An array. `writeElements` writes each element and calls `endElement` after it.
  virtual void array(FunctionView<void()> writeElements) = 0;
  virtual void endElement() = 0;

 protected:
  ~ValueSink() = default;
};

/// Defined in <ZEBUtilities/Coding/ZEBEncodable.h>.
template <class T>
void encodeTyped(ZEBEncoder& encoder, const T& object, const StringKey& forKey);

}  // namespace detail

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
    detail::encodeTyped(*this, object, forKey);
  }
  /// For `encodeObject` of objects and sequences, which then need no value. Calls `write`; false,
  /// without a call, when the encoder takes only values, as encoders of applications do.
  virtual bool encodeParts(FunctionView<void(detail::ValueSink&)> write, const StringKey& forKey) {
    static_cast<void>(write);
    static_cast<void>(forKey);
    return false;
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
