#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <ostream>
#include <vector>

namespace zeb::timeline {

/// The abilities of standard output.
struct Screen {
  std::size_t width = 100;
  bool hasColours = false;

  static Screen ofStandardOutput();
};

/// Escape sequences around what is printed.
struct Ink {
  const char* start = "";
  const char* stop = "";
};
inline constexpr Ink plain;
inline constexpr Ink strong{"\033[1m", "\033[0m"};
inline constexpr Ink faint{"\033[2m", "\033[0m"};
inline constexpr Ink warning{"\033[33m", "\033[0m"};

/// A paragraph of a cell.
struct Paragraph {
  NSString text;
  Ink ink = plain;
  std::size_t maximumLines = 1;
};
using Cell = std::vector<Paragraph>;

struct Column {
  NSString title;
  std::size_t widest = 20;  ///< columns at most
  bool isAlignedRight = false;
};

/// Rows of cells, aligned by the width that terminals show. Makes any text printable. Text that is
/// read from right to left begins at the right edge of its column.
class Table {
 public:
  explicit Table(std::vector<Column> columns);

  /// Missing cells are empty.
  void addRow(std::vector<Cell> cells);
  void print(std::ostream& out, const Screen& screen) const;

 private:
  struct Line {
    std::string text;
    Ink ink = plain;
    std::size_t width = 0;
    bool beginsAtRight = false;
  };

  std::vector<Column> columns_;
  std::vector<std::size_t> widths_;  ///< of the columns' content so far
  std::vector<std::vector<std::vector<Line>>> rows_;
};

}  // namespace zeb::timeline
