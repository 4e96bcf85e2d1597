#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>

#include <exception>

namespace zeb {

/// Names of the exceptions that the collections raise.
extern const char* const NSInvalidArgumentException;
extern const char* const NSRangeException;
extern const char* const NSGenericException;

/// The exception of the platform, which misuse of a value raises. Guards of the library that handle
/// platform exceptions let every other C++ exception pass. A shared immutable handle.
class NSException : public std::exception {
 public:
  NSException(const NSString& name, const NSString& reason, const NSDictionary& userInfo = nullptr);

  NSString name() const;
  NSString reason() const;
  NSDictionary userInfo() const;
  /// "name: reason", as UTF-8.
  const char* what() const noexcept override;

  /// The exception as a value, for error details.
  operator Value() const;
  /// Whether the value holds an exception.
  static bool isException(const Value& value) noexcept;
  /// The exception that the value holds; throws NSException (NSInvalidArgumentException) if it
  /// holds none.
  static NSException from(const Value& value);

 private:
  class Details;
  explicit NSException(Ref<NSObject> details) noexcept;
  const Details* details() const noexcept;

  Ref<NSObject> details_;  ///< always a `Details`
};

[[noreturn]] void raiseInvalidArgument(const NSString& reason);
[[noreturn]] void raiseRange(std::size_t index, std::size_t count);
/// Throws NSException (NSRangeException) unless the range is inside a sequence of `count` elements.
void requireRange(NSRange range, std::size_t count);

}  // namespace zeb
