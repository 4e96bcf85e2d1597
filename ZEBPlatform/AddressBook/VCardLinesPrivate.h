#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace zeb::detail {

/// Which property a line of a vCard has, of those that the address book uses.
enum class VCardProperty : std::uint8_t {
  other,
  begin,
  end,
  version,
  uid,
  kind,
  formattedName,
  name,
  nickname,
  organization,
  email,
  telephone,
};

/// One content line. The views refer to the text or to the lines' own memory, and are valid until
/// the next line is read.
struct VCardLine {
  VCardProperty property = VCardProperty::other;
  std::string_view value;  ///< with escapes, without white space around it
  bool isURI = false;      ///< the parameter VALUE says so
  bool isLatin1 = false;   ///< the parameter CHARSET says ISO-8859-1
  std::size_t place = 0;   ///< the offset in the text
};

/// Splits a text into content lines: ends of lines (CR LF or LF), folding, groups of properties,
/// parameters. Folding is undone on bytes, because it may split a character. Linear time.
class VCardLines {
 public:
  /// A mark of UTF-8 at the beginning is skipped.
  explicit VCardLines(std::string_view text) noexcept;

  /// Reads on to the next line with a property that is used. False at the end.
  bool next(VCardLine& line);

 private:
  std::string_view nextFoldedLine(bool& isFolded) noexcept;
  std::string_view unfolded(std::string_view line);

  const std::string_view text_;
  std::size_t place_ = 0;
  std::string unfolded_;
};

bool equalIgnoringCase(std::string_view left, std::string_view right) noexcept;

}  // namespace zeb::detail
