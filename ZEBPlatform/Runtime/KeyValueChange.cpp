#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Foundation/NSNull.h>
#include <ZEBPlatform/Runtime/KeyValueChange.h>

#include <span>

namespace zeb {

const char* const NSKeyValueChangeKindKey = "kind";
const char* const NSKeyValueChangeNewKey = "new";
const char* const NSKeyValueChangeOldKey = "old";
const char* const NSKeyValueChangeNotificationIsPriorKey = "notificationIsPrior";

namespace {

Value orNull(const Value& value) { return value ? value : Value(NSNull::null()); }

}  // namespace

const NSDictionary& KeyValueChange::dictionary() const {
  if (dictionary_) return dictionary_;
  struct Keys {
    const Value kind{NSKeyValueChangeKindKey};
    const Value fresh{NSKeyValueChangeNewKey};
    const Value old{NSKeyValueChangeOldKey};
    const Value isPrior{NSKeyValueChangeNotificationIsPriorKey};
  };
  static const detail::NeverDestroyed<Keys> keys;  // properties change until the process ends

  DictionaryEntry entries[4];
  std::size_t count = 0;
  entries[count++] = {keys->kind, std::uint64_t{kind()}};
  if (newValue_) entries[count++] = {keys->fresh, orNull(*newValue_)};
  if (oldValue_) entries[count++] = {keys->old, orNull(*oldValue_)};
  if (isPrior_) entries[count++] = {keys->isPrior, true};
  return dictionary_ = NSDictionary::dictionaryWithEntries(std::span(entries, count));
}

}  // namespace zeb
