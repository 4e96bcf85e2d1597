#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>

namespace zeb {

/// An absolute or relative URL (RFC 3986), kept as its text. Equal when the texts are. The module
/// Url has functions for its parts.
class NSURL : public Value {
 public:
  constexpr NSURL() noexcept = default;
  constexpr NSURL(std::nullptr_t) noexcept {}
  /// The value when it is a URL, else nil.
  template <detail::ValueBeside<NSURL> Source>
  explicit NSURL(const Source& value) noexcept : Value(value.isURL() ? value : Value()) {}

  /// Nil if `text` is nil or empty or does not follow the grammar of RFC 3986 (appendix A), which
  /// is strict: no characters beyond ASCII, no malformed percent escapes, brackets only around IP
  /// literals. Nothing is corrected, so the URL's text is `text`.
  static NSURL URLWithString(const NSString& text);

  NSString absoluteString() const;
};

}  // namespace zeb
