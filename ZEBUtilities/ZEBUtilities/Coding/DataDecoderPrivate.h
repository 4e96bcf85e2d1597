#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBUtilities/Coding/ArchiveFormatPrivate.h>
#include <ZEBUtilities/Coding/DecodingBuilderRegistry.h>
#include <ZEBUtilities/Coding/ZEBDecoder.h>
#include <ZEBUtilities/Coding/ZEBUnarchiverError.h>

#include <array>
#include <optional>
#include <string>

namespace zeb::detail {

/// Makes objects from the dictionary of one archive document.
class DataDecoder final : public ZEBDecoder {
 public:
  explicit DataDecoder(Ref<DecodingBuilderRegistry> decodingBuilderRegistry);

  /// The object that the document describes. The document must outlive the decoder. Throws
  /// `ZEBUnarchiverError` with its path, and whatever builders throw.
  Value decodeRoot(const NSDictionary& document);

  using ZEBDecoder::decodeObjectForKey;
  Value decodeObjectForKey(const StringKey& key) override;
  NSString decodeStringForKey(const StringKey& key) override;
  NSString decodeStringForKey(const StringKey& key, const NSString& defaultValue) override;
  NSString decodeStringOptionalForKey(const StringKey& key) override;
  NSNumber decodeNumberForKey(const StringKey& key, const NSNumber& defaultValue) override;
  NSNumber decodeNumberOptionalForKey(const StringKey& key) override;
  bool decodeBoolForKey(const StringKey& key) override;
  bool decodeBoolForKey(const StringKey& key, bool defaultValue) override;
  std::int64_t decodeIntForKey(const StringKey& key) override;
  std::int64_t decodeIntForKey(const StringKey& key, std::int64_t defaultValue) override;
  std::int32_t decodeInt32ForKey(const StringKey& key) override;
  std::int32_t decodeInt32ForKey(const StringKey& key, std::int32_t defaultValue) override;
  std::int64_t decodeInt64ForKey(const StringKey& key) override;
  std::int64_t decodeInt64ForKey(const StringKey& key, std::int64_t defaultValue) override;
  float decodeFloatForKey(const StringKey& key) override;
  float decodeFloatForKey(const StringKey& key, float defaultValue) override;
  double decodeDoubleForKey(const StringKey& key) override;
  double decodeDoubleForKey(const StringKey& key, double defaultValue) override;
  CGRect decodeCGRectForKey(const StringKey& key) override;
  CGRect decodeCGRectForKey(const StringKey& key, const CGRect& defaultValue) override;
  CGPoint decodeCGPointForKey(const StringKey& key) override;
  CGPoint decodeCGPointForKey(const StringKey& key, const CGPoint& defaultValue) override;
  CGSize decodeCGSizeForKey(const StringKey& key) override;
  CGSize decodeCGSizeForKey(const StringKey& key, const CGSize& defaultValue) override;
  NSRange decodeRangeForKey(const StringKey& key) override;
  NSRange decodeRangeForKey(const StringKey& key, const NSRange& defaultValue) override;
  bool containsValueForKey(const StringKey& key) const override;

 private:
  class Step;
  /// The registry's answer for an encodable name.
  struct KnownBuilder {
    const StringStorage* name = nullptr;  ///< inside the document; null while the place is empty
    Ref<DecodingBuilder> builder;
  };

  /// Search the current dictionary: by the stored key, and by an object's own key.
  const Value* find(const StringKey& storedKey) const noexcept;
  const Value* stored(const StringKey& key) const;
  /// The value under the key as a handle or record of one kind; nil when absent. Throws when the
  /// value is of another kind.
  template <class Handle>
  Handle handleOrNil(const StringKey& key);
  template <class Record>
  std::optional<Record> recordOrNil(const StringKey& key);
  NSNumber requiredNumber(const StringKey& key);
  template <class Record>
  Record requiredRecord(const StringKey& key);

  Value decoded(const Value& value, const StringKey& key, std::size_t index = NSNotFound);
  Value decodedTagged(const StringStorage& type, const StringKey& key);
  Value decodedDictionary(const StringKey& key);
  Value decodedLocation();
  Value decodedObject(const StringKey& key);
  ZEBEitherEncodable built(const StringStorage& encodableName);

  // Components of a tagged value, read from the current dictionary.
  Value component(const StringKey& name);
  double doubleComponent(const StringKey& name);
  std::uint64_t unsignedComponent(const StringKey& name, std::uint64_t max);
  NSDate dateComponent();
  NSData bytesComponent();
  Value listComponent(const StringKey& name, const StringKey& key);

  std::string path() const;

  mutable FieldKeys fieldKeys_;
  const Ref<DecodingBuilderRegistry> decodingBuilderRegistry_;
  /// By the name's hash. An entry is never replaced, because its builder may be running.
  std::array<KnownBuilder, 32> knownBuilders_;
  Step* innermost_ = nullptr;  ///< reads the current dictionary; null before the root
};

}  // namespace zeb::detail
