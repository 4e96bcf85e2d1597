#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Security/SecretBytes.h>

#include <optional>

namespace zeb::detail {

/// The text's UTF-8 form; none for nil and for a text that has none. Unlike `NSString::utf8` it
/// leaves no copy behind that is not overwritten.
std::optional<SecretBytes> secretUTF8(const NSString& text);

}  // namespace zeb::detail
