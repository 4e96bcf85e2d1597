#pragma once

#include <ZEBPlatform/Foundation/NSDictionary.h>

namespace zeb {

/// Stores the pair unless the object is nil, which leaves an existing entry as it is.
void zeb_setObjectIfNotNil(NSMutableDictionary dictionary, const Value& object, const Value& key);

/// The object for the key if there is one, of whatever kind: deliberately, a caller that stored
/// another kind gets it back unchanged. Otherwise a new empty mutable array, dictionary or set,
/// which is stored under the key. Nil on a nil dictionary.
Value zeb_nonnullMutableArrayForKey(NSMutableDictionary dictionary, const Value& key);
Value zeb_nonnullMutableDictionaryForKey(NSMutableDictionary dictionary, const Value& key);
Value zeb_nonnullMutableSetForKey(NSMutableDictionary dictionary, const Value& key);

}  // namespace zeb
