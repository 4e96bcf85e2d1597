#include <Keychain/SecretTextPrivate.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

namespace zeb {

std::optional<SecretBytes> detail::secretUTF8(const NSString& text) {
  if (text.isASCII()) return SecretBytes(text.asciiView());
  if (text.isNil() || !text.isWellFormed()) return std::nullopt;
  const std::u16string_view units = text.utf16View();
  SecretBytes bytes(utf8Length(units));
  auto place = bytes.mutableBytes().begin();
  for (std::size_t index = 0; index < units.size();) {
    const EncodedScalar encoded = encodeUTF8(nextScalar(units, index));
    place = std::ranges::copy(std::as_bytes(std::span(encoded.view())), place).out;
  }
  return bytes;
}

}  // namespace zeb
