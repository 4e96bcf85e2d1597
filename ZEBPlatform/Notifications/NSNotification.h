#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>
#include <ZEBPlatform/Memory/NSObject.h>

namespace zeb {

/// What a notification centre hands to observers: what happened, to which object, and details.
/// Immutable.
class NSNotification final : public NSObject {
 public:
  /// A nil name throws NSException (NSInvalidArgumentException).
  explicit NSNotification(const NSString& name, Value object = nullptr,
                          const NSDictionary& userInfo = nullptr);

  const NSString& name() const noexcept { return name_; }
  const Value& object() const noexcept { return object_; }
  const NSDictionary& userInfo() const noexcept { return userInfo_; }

  std::string description() const override;

 private:
  const NSString name_;
  const Value object_;
  const NSDictionary userInfo_;
};

}  // namespace zeb
