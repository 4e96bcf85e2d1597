#include "TextPeers.h"

#include <QList>
#include <QString>
#include <algorithm>
#include <iterator>

namespace zeb::bench {

struct QtTexts::Texts {
  QList<QString> list;
};

namespace {

struct Range {
  char32_t first, last;
};

/// The property Default_Ignorable_Code_Point, which Qt does not offer.
constexpr Range ignorableRanges[] = {
    {0xAD, 0xAD},       {0x34F, 0x34F},    {0x61C, 0x61C},   {0x115F, 0x1160}, {0x17B4, 0x17B5},
    {0x180B, 0x180E},   {0x200B, 0x200F},  {0x202A, 0x202E}, {0x2060, 0x206F}, {0x3164, 0x3164},
    {0xFE00, 0xFE0F},   {0xFEFF, 0xFEFF},  {0xFFA0, 0xFFA0}, {0xFFF0, 0xFFF8}, {0x1BCA0, 0x1BCA3},
    {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF}};

bool isIgnorable(char32_t character) {
  const auto* range = std::partition_point(std::begin(ignorableRanges), std::end(ignorableRanges),
                                           [&](Range part) { return part.last < character; });
  return range != std::end(ignorableRanges) && range->first <= character;
}

bool isPrintable(char32_t character) {
  if (QChar::isSpace(character)) return false;
  const QChar::Category category = QChar::category(character);
  return category != QChar::Other_Control && category != QChar::Other_Format &&
         category != QChar::Other_NotAssigned && !isIgnorable(character);
}

bool containsPrintable(const QString& text) {
  for (qsizetype index = 0; index < text.size(); ++index) {
    const QChar unit = text[index];
    if (!unit.isHighSurrogate()) {
      if (isPrintable(unit.unicode())) return true;
      continue;
    }
    ++index;
    if (index < text.size() && text[index].isLowSurrogate() &&
        isPrintable(QChar::surrogateToUcs4(unit, text[index]))) {
      return true;
    }
  }
  return false;
}

}  // namespace

QtTexts::QtTexts(const std::vector<std::u16string>& texts) : texts_(std::make_unique<Texts>()) {
  for (const std::u16string& text : texts) texts_->list.append(QString::fromStdU16String(text));
}

QtTexts::~QtTexts() = default;

std::size_t QtTexts::trim() const {
  std::size_t length = 0;
  for (const QString& text : texts_->list)
    length += static_cast<std::size_t>(text.trimmed().size());
  return length;
}

std::size_t QtTexts::countPrintable() const {
  return static_cast<std::size_t>(
      std::count_if(texts_->list.begin(), texts_->list.end(), containsPrintable));
}

}  // namespace zeb::bench
