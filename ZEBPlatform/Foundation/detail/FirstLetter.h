#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb::detail {

/// The text with its first character in upper case: of every script in programs that link the
/// component Text, else only one of a-z. Empty for nil.
NSString withUppercaseFirstLetter(const NSString& text);

}  // namespace zeb::detail

/// Replaces the text by the one with its first character in upper case. The component Text defines
/// it; in programs that do not link that component its address is null.
extern "C" [[gnu::weak]] void zebUppercaseFirstLetter(zeb::NSString& text);
