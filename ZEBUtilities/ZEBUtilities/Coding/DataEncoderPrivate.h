#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/detail/StaticText.h>
#include <ZEBPlatform/Geometry/CLLocation.h>
#include <ZEBPlatform/Json/JsonTextWriter.h>
#include <ZEBUtilities/Coding/ArchiveFormatPrivate.h>
#include <ZEBUtilities/Coding/ZEBEncodable.h>
#include <ZEBUtilities/Coding/ZEBEncoder.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <typeinfo>
#include <vector>

namespace zeb::detail {

/// Writes one graph of objects as an archive document.
///
/// The text is written directly, object by object, without an intermediate tree. The positions of
/// an object's fields are kept while the object is open, because a key that is written again
/// replaces its earlier value.
class DataEncoder final : public ZEBEncoder, private ValueSink {
 public:
  DataEncoder() = default;

  /// The document of a root object; `{}` for a root that is no object. Throws NSError when objects
  /// are nested too deeply.
  NSData encodeRoot(const Value& root);

  using ZEBEncoder::encodeObject;
  void encodeObject(const Value& object, const StringKey& forKey) override;
  bool encodeParts(FunctionView<void(ValueSink&)> write, const StringKey& forKey) override;
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

 private:
  class Nesting;
  class FieldGuard;
  /// The position in the text of an open object's field. Writing the key again changes the value's
  /// position.
  struct Field {
    std::uint32_t keyHash;
    std::uint32_t keyLength;  ///< of the key's text, with quotes and colon
    std::size_t keyStart;
    std::size_t valueStart;
    std::size_t valueEnd;
  };
  static constexpr auto keyOpening = joinedText(",\"", archive::fieldPrefix);
  static constexpr std::string_view keyClosing = "\":";
  /// The document's text of a key that was written before, because objects of one type write the
  /// same keys again and again. Only for keys without escapes, so that it contains the key itself.
  struct KnownKey {
    static constexpr std::size_t addedLength =
        std::string_view(keyOpening).size() + keyClosing.size();

    std::uint32_t hash = 0;
    std::size_t length = addedLength;
    std::array<char, 40> text;

    std::string_view own() const noexcept {
      return {text.data() + std::string_view(keyOpening).size(), length - addedLength};
    }
  };
  /// An object whose fields are being written.
  struct OpenObject {
    std::size_t firstField = 0;      ///< in `fields_`
    std::uint64_t keyMarks = 0;      ///< the bits that the hashes of all its keys choose
    bool hasReplacedValues = false;  ///< whether the text contains values that were replaced
    NSMutableDictionary indexes{
        nullptr};  ///< positions in `fields_` by the key's text; nil while there are few fields
  };

  template <class WriteValue>
  void writeField(const StringKey& key, const WriteValue& writeValue);
  void writeKey(const StringKey& key);
  void writeUnknownKey(const StringKey& key);
  void finishField(const Field& field);
  void finishFieldOfLargeObject(const Field& field);
  void replaceValue(Field& earlier, const Field& later) noexcept;
  std::string_view keyText(const Field& field) noexcept;
  void removeReplacedValues();

  void value(const Value& value) override;
  void object(const EncodableBox& object) override;
  void array(FunctionView<void()> writeElements) override;
  void endElement() override { text_.put(','); }

  void write(const Value& value);
  bool writeIfObject(const NSObject& object);
  bool isBox(const NSObject& object);
  template <class EncodeFields>
  void writeFields(const NSString& encodableName, const EncodeFields& encodeFields);
  template <class WriteName, class EncodeFields>
  void writeNamed(const WriteName& writeName, const EncodeFields& encodeFields);
  void requireLevel() const;
  template <class WriteElements>
  void writeList(const WriteElements& writeElements);
  void writeDictionary(const NSDictionary& dictionary);
  void writeNumber(const NSNumber& number);
  void writeString(const StringStorage& string);
  void writeFloat(float number);
  void writeDouble(double number);
  void writeBytes(std::string_view type, const NSData& bytes);
  void writeRect(const CGRect& rect);
  void writePoint(const CGPoint& point);
  void writeSize(const CGSize& size);
  void writeRange(const NSRange& range);
  void writeLocation(const CLLocation& location);
  void openTagged(std::string_view type);
  void component(std::string_view name, double number);
  void component(std::string_view name, std::uint64_t number);

  JsonTextWriter text_{true};
  std::vector<Field> fields_;              ///< of all open objects, the innermost object's last
  OpenObject* innermostObject_ = nullptr;  ///< null while no object is open
  std::size_t depth_ = 0;                  ///< levels of JSON that are open
  std::array<KnownKey, 32> knownKeys_;     ///< by the key's hash
  /// The classes of boxes that were found, because asking an object for its class by a dynamic_cast
  /// takes long.
  std::array<const std::type_info*, 16> boxTypes_{};
};

}  // namespace zeb::detail
