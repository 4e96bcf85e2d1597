#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/Value.h>

namespace zeb {

/// An absolute or relative URL, kept as its text. Equal when the texts are.
class NSURL : public Value {
 public:
  constexpr NSURL() noexcept = default;
  constexpr NSURL(std::nullptr_t) noexcept {}
  /// The value when it is a URL, else nil.
  template <detail::ValueBeside<NSURL> Source>
  explicit NSURL(const Source& value) noexcept : Value(value.isURL() ? value : Value()) {}

  /// Nil if `text` is nil or empty or contains a character that no URL can contain: white space, a
  /// control character, or one of "<>\^`{|}.
  static NSURL URLWithString(const NSString& text);

  NSString absoluteString() const;
};

}  // namespace zeb
