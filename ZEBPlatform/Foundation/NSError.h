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
  /// Bytes that should be a document are malformed; the description says what and where.
  NSPropertyListReadCorruptError = 3840,
  /// Values can't be written as a document: a kind, key or number that it can't hold, or nesting
  /// beyond its limit.
  NSPropertyListWriteInvalidError = 3852,
};

/// Keys of an error's details.
extern const char* const NSLocalizedDescriptionKey;
extern const char* const NSLocalizedFailureReasonErrorKey;
extern const char* const NSUnderlyingErrorKey;

/// Why an operation failed: a domain, a code in it, and details. A nullable shared handle; immutable,
/// so any thread may use it. Operations take `NSError* error = nullptr` last and fill it only when
/// they fail. Where an interface says that it throws errors, this is what it throws.
class NSError : public std::exception {
 public:
  NSError() noexcept = default;
  NSError(std::nullptr_t) noexcept {}
  NSError(const NSString& domain, std::int64_t code, const NSDictionary& userInfo = nullptr);

  bool isNil() const noexcept { return !details_; }
  explicit operator bool() const noexcept { return !isNil(); }

  NSString domain() const;
  std::int64_t code() const noexcept;
  /// Never nil on an error; empty when it was made without details.
  NSDictionary userInfo() const;
  /// The details' description, else a sentence made of domain and code.
  NSString localizedDescription() const;
  /// The details' reason; nil without one.
  NSString localizedFailureReason() const;
  NSError underlyingError() const;

  /// The localized description as UTF-8.
  const char* what() const noexcept override;

  /// The error as a value, for dictionaries, and back (nil when the value holds no error).
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
