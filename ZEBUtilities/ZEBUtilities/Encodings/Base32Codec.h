#pragma once

#include <ZEBPlatform/Foundation/NSData.h>
#include <ZEBPlatform/Foundation/NSString.h>

namespace zeb {

class Class;

/// Base32 with the bit layout and the padding of RFC 4648, section 6, for compact tokens.
///
/// The two directions deliberately use different alphabets: the encoder writes the lowercase
/// letters without "l" and "o", then "2" to "9"; the decoder knows the RFC's "A" to "Z" and "2" to
/// "7". So the decoder does not read back what the encoder has written (of "n2======" it
/// reads the "2" only); it reads what other programs write.
///
/// Has no state; any thread. Nil gives nil. The result is also nil if there is not enough memory
/// for it, if the text would be longer than a string can be, or if a conversion of a string raises
/// a platform exception.
class Base32Codec {
 public:
  /// Eight characters for each five bytes; the last group is filled up with "=".
  [[nodiscard]] static NSString base32StringWithData(const NSData& data);

  /// Ignores every character that is not in the decoder's alphabet, "=" included. Bits that the
  /// characters of an incomplete last group of eight do not determine are zero; 1 to 7 characters
  /// give 1, 1, 1, 2, 3, 3 and 4 bytes. A text with a character outside ASCII gives empty data.
  [[nodiscard]] static NSData dataWithBase32String(const NSString& string);

  /// Registered as "Base32Codec", with both functions under their selectors.
  static Class* runtimeClass();
};

}  // namespace zeb
