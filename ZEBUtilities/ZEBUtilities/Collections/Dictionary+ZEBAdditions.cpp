#include <ZEBPlatform/Linux/detail/Console.h>
#include <ZEBUtilities/Collections/Dictionary+ZEBAdditions.h>

#include <algorithm>

namespace zeb::detail {

void stopForEmptyPath() noexcept { fatal("zeb_objectForPathElementKeys needs at least one key"); }

Value objectAtPath(Value value, const PathElementKeys& keys) {
  for (std::size_t index = 1; index < keys.count(); ++index) {
    const NSDictionary dictionary(value);
    const bool hasStringKeys =
        !dictionary.isNil() &&
        std::all_of(dictionary.begin(), dictionary.end(),
                    [](const DictionaryEntry& entry) { return entry.key.isString(); });
    if (!hasStringKeys) return {};
    value = dictionary.objectForKey(keys[index]);
  }
  return value;
}

}  // namespace zeb::detail
