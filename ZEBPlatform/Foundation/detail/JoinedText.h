#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <initializer_list>
#include <string_view>

namespace zeb::detail {

/// A borrowed piece of text in one of the two stored forms.
class TextPiece {
 public:
  TextPiece(const char* ascii) noexcept : TextPiece(std::string_view(ascii)) {}
  /// The bytes must be ASCII.
  TextPiece(std::string_view ascii) noexcept : ascii_(ascii) {}
  TextPiece(std::u16string_view units) noexcept : units_(units) {}
  /// A nil text is an empty piece.
  TextPiece(const NSString& text) noexcept : ascii_(text.asciiView()), units_(text.utf16View()) {}

  std::size_t length() const noexcept { return ascii_.size() + units_.size(); }
  std::string_view ascii() const noexcept { return ascii_; }
  std::u16string_view units() const noexcept { return units_; }

 private:
  // At most one of them is not empty.
  std::string_view ascii_;
  std::u16string_view units_;
};

/// The pieces one after the other, copied once.
NSString joinedText(std::initializer_list<TextPiece> pieces);

}  // namespace zeb::detail
