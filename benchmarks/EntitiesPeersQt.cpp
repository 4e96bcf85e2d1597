#include "EntitiesPeers.h"

#include <QString>

#include <algorithm>

namespace zeb::bench {

namespace {

bool isRightToLeft(QChar character) {
  const char16_t unit = character.unicode();
  return (unit >= 0x590 && unit <= 0x8FF) || (unit >= 0xFB1D && unit <= 0xFDFD) ||
         (unit >= 0xFE70 && unit <= 0xFEFC);
}

bool isControl(QChar character) {
  const char16_t unit = character.unicode();
  return unit == 0x61C || unit == 0x200E || unit == 0x200F || (unit >= 0x202A && unit <= 0x202E) ||
         (unit >= 0x2066 && unit <= 0x2069);
}

}  // namespace

DirectionWork directionWorkWithQt(const std::u16string& text) {
  return [string = QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()))] {
    const bool containsAny = std::any_of(string.begin(), string.end(), isRightToLeft);
    unsigned rightToLeft = 0, others = 0;
    for (const QChar character : string) {
      if (isControl(character)) continue;
      ++(isRightToLeft(character) ? rightToLeft : others);
    }
    const float share = static_cast<float>(rightToLeft) / static_cast<float>(rightToLeft + others);
    return static_cast<unsigned>(containsAny) | static_cast<unsigned>(share > 0.3f) << 1;
  };
}

}  // namespace zeb::bench
