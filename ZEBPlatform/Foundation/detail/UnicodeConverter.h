#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace zeb::detail {

/// What a conversion has read from its source and written to its target.
struct TextProgress {
  std::size_t read = 0;
  std::size_t written = 0;
};

/// Which units beyond control characters, quotes, backslashes and unpaired surrogates stop
/// `encodeUntilEscape`.
enum class SlashEscapes { no, yes };

/// Conversions of texts between UTF-8 and UTF-16. One implementation is plain code; the others
/// convert blocks with vector instructions. All give the same results, and none reads or writes
/// outside the stated memory.
struct UnicodeConverter {
  /// Bytes past the end of the targets of `decodeUntilBackslash` and `encodeUntilEscape` that may
  /// be overwritten.
  static constexpr std::size_t slack = 64;

  /// Converts all of `utf8`. Malformed sequences become U+FFFD, as many as `decodeUTF8` finds;
  /// surrogates' three-byte forms become the surrogates again. `units` has room for as many units
  /// as there are bytes.
  std::size_t (*decode)(std::string_view utf8, char16_t* units) noexcept;

  /// The same up to the first malformed sequence; surrogates are malformed here.
  TextProgress (*decodeWellFormed)(std::string_view utf8, char16_t* units) noexcept;

  /// The same up to the first backslash, for text that is known to be well-formed. `readable`
  /// bytes may be read from its start. `units` has room for as many units as there are bytes, and
  /// for the slack.
  TextProgress (*decodeUntilBackslash)(std::string_view utf8, std::size_t readable,
                                       char16_t* units) noexcept;

  /// The number of bytes that `encode` writes.
  std::size_t (*encodedLength)(std::u16string_view units) noexcept;

  /// Converts all units and returns the number of bytes; unpaired surrogates get their three-byte
  /// forms. `utf8` has `room` for `encodedLength` bytes or more.
  std::size_t (*encode)(std::u16string_view units, char* utf8, std::size_t room) noexcept;

  /// Converts up to the first unit that JSON strings escape: a control character, a quote, a
  /// backslash, an unpaired surrogate and, if asked for, a slash. `utf8` has room for three bytes
  /// per unit, and for the slack.
  TextProgress (*encodeUntilEscape)(std::u16string_view units, char* utf8,
                                    SlashEscapes slashes) noexcept;
};

/// The implementation for this processor.
const UnicodeConverter& unicodeConverter() noexcept;

extern const UnicodeConverter plainUnicodeConverter;

/// All implementations that this processor can run, so that tests can compare them.
std::vector<const UnicodeConverter*> supportedUnicodeConverters();

}  // namespace zeb::detail
