#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSError.h>
#include <ZEBPlatform/Foundation/NSString.h>

#include <cstdint>

namespace zeb {

/// What objects write their fields to and read them from, each field under a key: a
/// `NSKeyedArchiver` while they are written, a `NSKeyedUnarchiver` while they are read. The
/// functions of the other direction, and a nil key, throw NSException (NSInvalidArgumentException).
/// Belongs to one thread.
class NSCoder {
 public:
  NSCoder() = default;
  NSCoder(const NSCoder&) = delete;
  NSCoder& operator=(const NSCoder&) = delete;

  /// A second value for a key replaces the first one.
  virtual void encodeInteger(std::int64_t value, const NSString& key);
  virtual void encodeInt32(std::int32_t value, const NSString& key);
  /// Nil writes nothing.
  virtual void encodeObject(const NSString& string, const NSString& key);
  /// An element that is not a string throws NSException (NSInvalidArgumentException).
  virtual void encodeObject(const NSArray& strings, const NSString& key);

  virtual bool containsValueForKey(const NSString& key) const;

  /// A missing field is 0 or nil. A field of another kind, an array with elements of another kind,
  /// or a number beyond the range of the result is also 0 or nil and fails the whole archive: see
  /// `error`.
  virtual std::int64_t decodeIntegerForKey(const NSString& key);
  virtual std::int32_t decodeInt32ForKey(const NSString& key);
  virtual NSString decodeStringForKey(const NSString& key);
  virtual NSArray decodeArrayOfStringsForKey(const NSString& key);

  /// Fails the archive for a reason that only the object knows. The first failure counts.
  virtual void failWithError(const NSError& error);
  /// The first failure, or nil.
  virtual NSError error() const;

 protected:
  ~NSCoder() = default;
};

/// The coder that a selector got as its argument. Throws NSException (NSInvalidArgumentException)
/// if it is nil.
NSCoder& coderArgument(NSCoder* coder);

/// A protocol of objects that can be written to an archive. A class that can also be read has the
/// function `static Ref<T> initWithCoder(NSCoder& coder)`.
class NSSecureCoding {
 public:
  virtual void encodeWithCoder(NSCoder& coder) const = 0;

 protected:
  ~NSSecureCoding() = default;
};

}  // namespace zeb
