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

  /// Nil when `text` is nil or empty or holds what no URL may hold: white space, control characters,
  /// or one of the characters "<>\^`{|}.
  static NSURL URLWithString(const NSString& text);

  NSString absoluteString() const;
};

}  // namespace zeb
