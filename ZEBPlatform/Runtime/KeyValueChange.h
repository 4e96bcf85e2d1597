#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/StringKey.h>
#include <ZEBPlatform/Foundation/Value.h>

#include <cstdint>

namespace zeb {

/// How a property changed; the runtime reports setting only.
enum NSKeyValueChange : std::uintptr_t {
  NSKeyValueChangeSetting = 1,
  NSKeyValueChangeInsertion = 2,
  NSKeyValueChangeRemoval = 3,
  NSKeyValueChangeReplacement = 4,
};

/// Keys of a change dictionary.
extern const char* const NSKeyValueChangeKindKey;
extern const char* const NSKeyValueChangeNewKey;
extern const char* const NSKeyValueChangeOldKey;
extern const char* const NSKeyValueChangeNotificationIsPriorKey;

/// The description of a change that observers get: its kind, and the new and old value if they
/// asked for them. Converts to the change dictionary, which is made when it is first used.
///
/// Lives only as long as the call that it is passed to, and stays on that call's thread; the
/// dictionary may be kept.
class KeyValueChange {
 public:
  /// Null for a value that was not asked for or is not known yet.
  KeyValueChange(const Value* oldValue, const Value* newValue, bool isPrior) noexcept
      : oldValue_(oldValue), newValue_(newValue), isPrior_(isPrior) {}

  NSKeyValueChange kind() const noexcept { return NSKeyValueChangeSetting; }
  /// Nil when it is nil or was not asked for.
  Value newValue() const noexcept { return newValue_ ? *newValue_ : Value(); }
  Value oldValue() const noexcept { return oldValue_ ? *oldValue_ : Value(); }
  /// Whether the change is still to come.
  bool isPrior() const noexcept { return isPrior_; }

  /// A nil value is in there as null.
  const NSDictionary& dictionary() const;
  operator const NSDictionary&() const { return dictionary(); }

  bool holds(const Value* oldValue, const Value* newValue) const noexcept {
    return oldValue == oldValue_ && newValue == newValue_;
  }

 private:
  const Value* oldValue_;
  const Value* newValue_;
  bool isPrior_;
  mutable NSDictionary dictionary_;
};

}  // namespace zeb
