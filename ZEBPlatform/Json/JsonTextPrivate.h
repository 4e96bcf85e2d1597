#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zeb::detail {

/// The encoding forms that a JSON document may come in (RFC 4627, section 3).
enum class JsonEncoding : std::uint8_t {
  utf8,
  utf16LittleEndian,
  utf16BigEndian,
  utf32LittleEndian,
  utf32BigEndian
};

/// A document as UTF-8 without byte-order mark. Maps offsets back to positions in the original
/// bytes.
class JsonText {
 public:
  /// Detects the encoding by the byte-order mark or, without one, by the zero bytes of the first
  /// characters. UTF-8 is not copied, so that `bytes` must outlive this object. Malformed UTF-16 or
  /// UTF-32 ends the text and sets `malformedAt()`.
  explicit JsonText(std::string_view bytes);

  std::string_view utf8() const noexcept { return utf8_; }
  /// Byte offset in the original of the first malformed unit, or npos.
  std::size_t malformedAt() const noexcept { return malformedAt_; }

  struct Position {
    std::size_t byteOffset;  ///< in the original bytes, from 0
    std::size_t line;        ///< from 1
    std::size_t column;      ///< in characters, from 1
  };
  Position positionOf(std::size_t utf8Offset) const noexcept;

 private:
  void transcode(std::string_view bytes);

  JsonEncoding encoding_ = JsonEncoding::utf8;
  std::size_t markLength_ = 0;
  std::size_t malformedAt_ = std::string_view::npos;
  std::string own_;
  std::string_view utf8_;
};

}  // namespace zeb::detail
