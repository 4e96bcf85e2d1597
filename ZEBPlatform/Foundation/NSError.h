#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <exception>

namespace zeb {

/// The platform's own domain, and the codes of it that this library reports.
extern const char* const NSCocoaErrorDomain;
/// Domains of system error numbers, of loading URLs, and of the network services.
extern const char* const NSPOSIXErrorDomain;
extern const char* const NSURLErrorDomain;
extern const char* const kCFErrorDomainCFNetwork;

enum : std::int64_t {
  /// Bytes of a document are malformed; the description says what is wrong and where.
  NSPropertyListReadCorruptError = 3840,
  /// Values cannot be written as a document: it cannot hold their kind, key or number, or they are
  /// nested beyond its limit.
  NSPropertyListWriteInvalidError = 3852,
  /// An archive is malformed, or contains another class or another kind of field than expected.
  NSCoderReadCorruptError = 4864,
  /// There is nothing to read an archive from.
  NSCoderValueNotFoundError = 4865,
};

/// Keys of the details of an error.
extern const char* const NSLocalizedDescriptionKey;
extern const char* const NSLocalizedFailureReasonErrorKey;
extern const char* const NSUnderlyingErrorKey;
/// The path of the file that the error is about.
extern const char* const NSFilePathErrorKey;

/// Why an operation failed: a domain, a code in it, and details. A nullable shared handle;
/// immutable, so any thread may use it. Operations take `NSError* error = nullptr` as their last
/// parameter and fill it only if they fail. Interfaces that throw errors throw this class.
///
/// `operator<<`, "%@" and fmt (Foundation/fmt.h) print domain, code and description; `what()` is
/// the description alone.
class NSError : public std::exception {
 public:
  NSError() noexcept = default;
  NSError(std::nullptr_t) noexcept {}
  NSError(const NSString& domain, std::int64_t code, const NSDictionary& userInfo = nullptr);

  bool isNil() const noexcept { return !details_; }
  explicit operator bool() const noexcept { return !isNil(); }

  NSString domain() const;
  std::int64_t code() const noexcept;
  /// Empty if the error was made without details; nil only on a nil error.
  NSDictionary userInfo() const;
  /// The description in the details, else a sentence made of domain and code.
  NSString localizedDescription() const;
  /// The failure reason in the details; nil without one.
  NSString localizedFailureReason() const;
  NSError underlyingError() const;

  /// The localized description as UTF-8.
  const char* what() const noexcept override;

  /// The error as a value, for dictionaries, and back (nil if the value does not hold an error).
  operator Value() const;
  static NSError from(const Value& value) noexcept;

  /// Same domain, code and details; nil equals nil.
  friend bool operator==(const NSError& left, const NSError& right);

 private:
  class Details;
  explicit NSError(Ref<NSObject> details) noexcept;
  const Details* details() const noexcept;

  Ref<NSObject> details_;  ///< always a `Details`
};

std::ostream& operator<<(std::ostream& stream, const NSError& error);

}  // namespace zeb
