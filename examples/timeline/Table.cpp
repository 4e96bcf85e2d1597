#include "Table.h"

#include <ZEBUtilities/Text/NSString+ZEBInternational.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "Text.h"

namespace zeb::timeline {

Screen Screen::ofStandardOutput() {
  Screen screen;
  if (!isatty(STDOUT_FILENO)) return screen;
  screen.hasColours = !std::getenv("NO_COLOR");
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
    screen.width = std::clamp<std::size_t>(size.ws_col, 76, 120);
  }
  return screen;
}

Table::Table(std::vector<Column> columns) : columns_(std::move(columns)), widths_(columns_.size()) {
  std::vector<Cell> titles;
  for (const Column& column : columns_) titles.push_back({{column.title, faint}});
  addRow(std::move(titles));
}

void Table::addRow(std::vector<Cell> cells) {
  cells.resize(columns_.size());
  auto& row = rows_.emplace_back(cells.size());
  for (std::size_t index = 0; index < cells.size(); ++index) {
    for (const auto& [text, ink, maximumLines] : cells[index]) {
      const bool beginsAtRight = zeb_plainTextShouldBeRenderedFromRight(text);
      for (const NSString& line : wrapped(printable(text), columns_[index].widest, maximumLines)) {
        // An invisible mark keeps terminals that reorder such text from moving the cells.
        const char* mark = zeb_containsRTLCharacters(line) ? "\u200E" : "";
        const std::size_t width = displayWidth(line);
        row[index].push_back({mark + line.utf8() + mark, ink, width, beginsAtRight});
        widths_[index] = std::max(widths_[index], width);
      }
    }
  }
}

void Table::print(std::ostream& out, const Screen& screen) const {
  for (const auto& row : rows_) {
    std::size_t height = 0;
    for (const auto& lines : row) height = std::max(height, lines.size());
    for (std::size_t number = 0; number < height; ++number) {
      std::size_t owedSpaces =
          0;  // written before the next text, so that lines do not end in spaces
      for (std::size_t index = 0; index < row.size(); ++index) {
        const Line line = number < row[index].size() ? row[index][number] : Line{};
        const std::size_t padding = widths_[index] - line.width;
        const bool isAlignedRight = columns_[index].isAlignedRight || line.beginsAtRight;
        const std::size_t paddingBefore = isAlignedRight ? padding : 0;
        if (line.width > 0) {
          const Ink ink = screen.hasColours ? line.ink : plain;
          out << std::string(owedSpaces + paddingBefore, ' ') << ink.start << line.text << ink.stop;
          owedSpaces = padding - paddingBefore;
        } else {
          owedSpaces += padding;
        }
        owedSpaces += 2;
      }
      out << '\n';
    }
  }
}

}  // namespace zeb::timeline
