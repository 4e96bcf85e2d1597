#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBUtilities/Coding/ArchiveFormatPrivate.h>
#include <ZEBUtilities/Coding/DecodingBuilderRegistry.h>
#include <ZEBUtilities/Coding/ZEBDecoder.h>
#include <ZEBUtilities/Coding/ZEBUnarchiverError.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

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
  Value decodedTagged(const NSString& type, const StringKey& key);
  Value decodedDictionary(const StringKey& key);
  Value decodedLocation();
  Value decodedObject(const StringKey& key);

  // Components of a tagged value, read from the current dictionary.
  Value component(const StringKey& name);
  double doubleComponent(const StringKey& name);
  std::uint64_t unsignedComponent(const StringKey& name, std::uint64_t max);
  NSDate dateComponent();
  NSData bytesComponent();
  NSArray listComponent(const StringKey& name, const StringKey& key);

  std::string path() const;

  mutable FieldKeys fieldKeys_;
  const Ref<DecodingBuilderRegistry> decodingBuilderRegistry_;
  // The caller keeps the document, which these point into.
  std::vector<const DictionaryStorage*> stack_;  ///< the dictionaries around the current one
  const DictionaryStorage* currentDictionary_ = nullptr;
  std::vector<std::pair<const StringKey*, std::size_t>>
      steps_;  ///< keys and list indexes that lead to the current dictionary
};

}  // namespace zeb::detail
