#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBPlatform/Memory/Ref.h>

#include <cstddef>
#include <string>

namespace zeb {

/// A name and a value of a query, such as the "a=1" in "?a=1&b". The value is nil if there is no
/// "=". Equal when name and value are. Immutable; any thread.
class NSURLQueryItem final : public NSObject {
 public:
  NSURLQueryItem(const NSString& name, const NSString& value)
      : name_(name.copy()), value_(value.copy()) {}
  static Ref<NSURLQueryItem> queryItemWithName(const NSString& name, const NSString& value) {
    return makeRef<NSURLQueryItem>(name, value);
  }

  const NSString& name() const noexcept { return name_; }
  const NSString& value() const noexcept { return value_; }

  bool isEqual(const NSObject& other) const override;
  std::size_t hash() const noexcept override;
  /// "name=value", or "name" without a value.
  std::string description() const override;

 private:
  const NSString name_;
  const NSString value_;
};

}  // namespace zeb
