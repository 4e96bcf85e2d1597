#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/KeyedCoding/NSCoder.h>
#include <ZEBPlatform/Memory/Ref.h>
#include <ZEBPlatform/Runtime/Class.h>

namespace zeb {

/// Reads what `NSKeyedArchiver` has written.
///
/// Secure: the caller names the class, and an archive of any other class, subclasses included, is
/// refused before any object is made. Data of any origin may be read.
class NSKeyedUnarchiver final : public NSCoder {
 public:
  /// The object, made by `T::initWithCoder`. Nil and an error of NSCocoaErrorDomain
  /// (NSCoderReadCorruptError, or NSCoderValueNotFoundError if the data is nil) when the data is no
  /// archive of a `T`, or one of the fields that it reads is of another kind. Takes time and memory
  /// in proportion to the data (see `NSJSONSerialization` for the factor), so refuse data of
  /// foreign origin that is longer than your archives.
  template <class T>
  static Ref<T> unarchivedObjectOfClass(const NSData& data, NSError* error = nullptr) {
    NSKeyedUnarchiver unarchiver(data, T::runtimeClass()->name());
    Ref<T> object = unarchiver.error_ ? nullptr : T::initWithCoder(unarchiver);
    if (!unarchiver.error_) return object;
    if (error) *error = unarchiver.error_;
    return nullptr;
  }

  bool containsValueForKey(const NSString& key) const override;
  std::int64_t decodeIntegerForKey(const NSString& key) override;
  std::int32_t decodeInt32ForKey(const NSString& key) override;
  NSString decodeStringForKey(const NSString& key) override;
  NSArray decodeArrayOfStringsForKey(const NSString& key) override;
  void failWithError(const NSError& error) override;
  NSError error() const override { return error_; }

 private:
  NSKeyedUnarchiver(const NSData& data, const NSString& className);
  std::int64_t decodeInteger(const NSString& key, std::int64_t min, std::int64_t max);
  Value valueForKey(const NSString& key) const;
  void failCorrupt(const NSString& description);

  NSDictionary fields_;
  NSError error_;
};

}  // namespace zeb
