#pragma once

#include <Foundation/NSDictionary.h>
#include <Geometry/CLLocation.h>
#include <ZEBUtilities/Coding/ArchiveFormatPrivate.h>
#include <ZEBUtilities/Coding/ZEBEncodable.h>
#include <ZEBUtilities/Coding/ZEBEncoder.h>

#include <initializer_list>
#include <utility>
#include <vector>

namespace zeb::detail {

/// Turns one graph of objects into the dictionary that an archive document is. Used for one graph only.
class DataEncoder final : public ZEBEncoder {
 public:
  DataEncoder();

  using ZEBEncoder::encodeObject;
  void encodeObject(const Value& object, const StringKey& forKey) override;
  void encodeString(const NSString& string, const StringKey& forKey) override;
  void encodeNumber(const NSNumber& number, const StringKey& forKey) override;
  void encodeBool(bool boolean, const StringKey& forKey) override;
  void encodeInt(std::int64_t integer, const StringKey& forKey) override;
  void encodeInt32(std::int32_t integer, const StringKey& forKey) override;
  void encodeInt64(std::int64_t integer, const StringKey& forKey) override;
  void encodeFloat(float number, const StringKey& forKey) override;
  void encodeDouble(double number, const StringKey& forKey) override;
  void encodeCGRect(const CGRect& rect, const StringKey& forKey) override;
  void encodeCGPoint(const CGPoint& point, const StringKey& forKey) override;
  void encodeCGSize(const CGSize& size, const StringKey& forKey) override;
  void encodeRange(const NSRange& range, const StringKey& forKey) override;

  /// The root object's own dictionary; empty while no object has been encoded.
  const NSDictionary& rootDictionary() const noexcept { return rootDictionary_; }

 private:
  class Nesting;
  struct Component {
    const NSString& name;
    Value value;
  };

  void store(Value encoded, const StringKey& forKey);
  Value encoded(const Value& value);
  Value encodedNumber(const NSNumber& number) const;
  Value encodedString(const NSString& string) const;
  Value encodedBox(const NSValue& box) const;
  Value encodedLocation(const CLLocation& location) const;
  Value encodedArray(const NSArray& array);
  Value encodedDictionary(const NSDictionary& dictionary);
  template <class EncodeFields>
  Value encodedFields(const NSString& encodableName, const EncodeFields& encodeFields);
  Value encodedDouble(double number) const { return encodedNumber(NSNumber(number)); }
  Value tagged(const NSString& type, std::initializer_list<Component> components) const;

  const ArchiveNames& names_ = ArchiveNames::shared();
  FieldKeys fieldKeys_;
  std::vector<NSMutableDictionary> stack_;  ///< of the objects around the current one
  NSMutableDictionary currentDictionary_;
  NSDictionary rootDictionary_ = NSDictionary::dictionary();
  std::size_t depth_ = 0;
};

}  // namespace zeb::detail
