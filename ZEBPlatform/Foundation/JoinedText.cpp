#include <ZEBPlatform/Foundation/detail/JoinedText.h>
#include <ZEBPlatform/Foundation/detail/StringBuilding.h>
#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>

#include <algorithm>

namespace zeb::detail {

namespace {

template <class Unit>
NSString joined(std::initializer_list<TextPiece> pieces, std::size_t length) {
  StringStorage* const storage = newStringStorage<Unit>(length);
  Unit* to = contentOf<Unit>(storage);
  const auto narrowed = [](auto unit) { return static_cast<Unit>(unit); };
  for (const TextPiece& piece : pieces) {
    to = std::copy(piece.ascii().begin(), piece.ascii().end(), to);
    to = std::transform(piece.units().begin(), piece.units().end(), to, narrowed);
  }
  return adoptString(storage);
}

}  // namespace

NSString joinedText(std::initializer_list<TextPiece> pieces) {
  std::size_t length = 0;
  bool isNarrow = true;
  for (const TextPiece& piece : pieces) {
    length += piece.length();
    isNarrow = isNarrow && isASCII(piece.units());
  }
  return isNarrow ? joined<char>(pieces, length) : joined<char16_t>(pieces, length);
}

}  // namespace zeb::detail
