#include <Foundation/NSNull.h>
#include <Runtime/KeyValueChange.h>

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
  static const Value kindKey(NSKeyValueChangeKindKey);
  static const Value newKey(NSKeyValueChangeNewKey);
  static const Value oldKey(NSKeyValueChangeOldKey);
  static const Value priorKey(NSKeyValueChangeNotificationIsPriorKey);

  DictionaryEntry entries[4];
  std::size_t count = 0;
  entries[count++] = {kindKey, std::uint64_t{kind()}};
  if (newValue_) entries[count++] = {newKey, orNull(*newValue_)};
  if (oldValue_) entries[count++] = {oldKey, orNull(*oldValue_)};
  if (isPrior_) entries[count++] = {priorKey, true};
  return dictionary_ = NSDictionary::dictionaryWithEntries(std::span(entries, count));
}

}  // namespace zeb
