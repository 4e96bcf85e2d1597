#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBUtilities/Collections/Dictionary+ZEBAdditions.h>

#include <algorithm>

namespace zeb::detail {

void stopForEmptyPath() noexcept { fatal("zeb_objectForPathElementKeys needs at least one key"); }

Value objectAtPath(Value value, std::span<const NSString> keys) {
  for (const NSString& key : keys) {
    const NSDictionary dictionary(value);
    const bool hasStringKeys =
        !dictionary.isNil() &&
        std::all_of(dictionary.begin(), dictionary.end(),
                    [](const DictionaryEntry& entry) { return entry.key.isString(); });
    if (!hasStringKeys) return {};
    value = dictionary.objectForKey(key);
  }
  return value;
}

}  // namespace zeb::detail
