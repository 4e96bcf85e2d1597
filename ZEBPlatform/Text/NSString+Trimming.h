#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Text/NSCharacterSet.h>

namespace zeb {

/// Without the characters of the set at both ends; the text itself if there are none, or a copy if
/// it is mutable. A surrogate pair is one character. Nil on nil; a nil set trims nothing. Any
/// thread.
[[nodiscard]] NSString stringByTrimmingCharactersInSet(const NSString& string,
                                                       const Ref<NSCharacterSet>& set);

/// The pieces between the characters of the set. Between two such characters in a row is an empty
/// piece, and a text that begins or ends with one has an empty piece there. So the empty text gives
/// one empty piece. Nil on nil; a nil set separates nothing. Any thread.
[[nodiscard]] NSArray componentsSeparatedByCharactersInSet(const NSString& string,
                                                           const Ref<NSCharacterSet>& set);

}  // namespace zeb
