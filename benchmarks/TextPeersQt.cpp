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

QString withoutLeadingSpace(const QString& text) {
  qsizetype begin = 0;
  while (begin < text.size() && text[begin].isSpace()) ++begin;
  return begin == 0 ? text : text.sliced(begin);
}

QString withoutTrailingSpace(const QString& text) {
  qsizetype end = text.size();
  while (end > 0 && text[end - 1].isSpace()) --end;
  return end == text.size() ? text : text.first(end);
}

}  // namespace

QtTexts::QtTexts(const std::vector<std::u16string>& texts) : texts_(std::make_unique<Texts>()) {
  for (const std::u16string& text : texts) texts_->list.append(QString::fromStdU16String(text));
}

QtTexts::~QtTexts() = default;

std::size_t QtTexts::trim() const {
  std::size_t sum = 0;
  for (const QString& text : texts_->list) {
    const qsizetype lengths = text.trimmed().size() + withoutLeadingSpace(text).size() +
                              withoutTrailingSpace(text).size();
    sum += static_cast<std::size_t>(lengths) + !text.trimmed().isEmpty();
  }
  return sum;
}

std::size_t QtTexts::countPrintable() const {
  return static_cast<std::size_t>(
      std::count_if(texts_->list.begin(), texts_->list.end(), containsPrintable));
}

std::size_t QtTexts::toUTF8() const {
  qsizetype sum = 0;
  for (const QString& text : texts_->list) sum += text.toUtf8().size();
  return static_cast<std::size_t>(sum);
}

std::size_t qtLengthOfUTF8(std::string_view utf8) {
  return static_cast<std::size_t>(
      QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size())).size());
}

}  // namespace zeb::bench
