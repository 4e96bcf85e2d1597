#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb::detail {

/// Calls `use` with the stored code units of the text and answers its result. The units are a
/// `std::string_view` of ASCII or a `std::u16string_view`, so that ASCII has a loop of its own that
/// reads bytes. Nil gives no units.
template <class Use>
auto withUnits(const NSString& string, const Use& use) {
  return string.isASCII() ? use(string.asciiView()) : use(string.utf16View());
}

}  // namespace zeb::detail
