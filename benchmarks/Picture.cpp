#include "Picture.h"

#include <algorithm>
#include <cmath>
#include <fstream>

#include "Svg.h"

namespace zeb::bench {

namespace {

constexpr int width = 900;
constexpr int plotLeft = 340;
constexpr int plotRight = 830;
constexpr int top = 64;
constexpr int rowHeight = 20;
constexpr int barHeight = 12;

constexpr const char* lightStyle = ".better{fill:#2f6fb3}.worse{fill:#c4631d}";
constexpr const char* darkStyle = ".better{fill:#5b9fe3}.worse{fill:#e8894a}";

/// Powers of two between which all ratios lie, as exponents, and the places of ratios there.
struct Scale {
  int lowest = -1;
  int highest = 1;

  explicit Scale(const std::vector<Comparison>& comparisons) {
    for (const Comparison& comparison : comparisons) {
      const double exponent = std::log2(comparison.ratio());
      lowest = std::min(lowest, static_cast<int>(std::floor(exponent)));
      highest = std::max(highest, static_cast<int>(std::ceil(exponent)));
    }
  }
  double placeOf(double ratio) const {
    return plotLeft + (std::log2(ratio) - lowest) / (highest - lowest) * (plotRight - plotLeft);
  }
};

void drawGrid(std::ostream& svg, const Scale& scale, int bottom) {
  const int step = (scale.highest - scale.lowest) / 10 + 1;
  for (int exponent = scale.lowest; exponent <= scale.highest; ++exponent) {
    if (exponent % step != 0) continue;
    const double x = scale.placeOf(std::exp2(exponent));
    drawLine(svg, x, top - 8, x, bottom, exponent == 0 ? "one" : "grid");
    drawText(svg, x, top - 12, "axis middle",
             exponent < 0 ? formatted("1/%d", 1 << -exponent) : formatted("%d", 1 << exponent));
  }
}

void drawRow(std::ostream& svg, const Scale& scale, const Comparison& comparison, int y) {
  const double ratio = comparison.ratio();
  const double one = scale.placeOf(1), end = scale.placeOf(ratio);
  drawText(svg, plotLeft - 12, y + 14, "end", comparison.peer);
  svg << "<rect x=\"" << std::min(one, end) << "\" y=\"" << y + (rowHeight - barHeight) / 2
      << "\" width=\"" << std::abs(end - one) << "\" height=\"" << barHeight << "\" class=\""
      << (ratio < 1 ? "worse" : "better") << "\"/>\n";
  drawText(svg, std::max(one, end) + 6, y + 14, "", formatted("%.3g", ratio));
}

}  // namespace

bool drawPicture(const std::vector<Comparison>& comparisons, const std::string& file) {
  if (comparisons.empty()) return true;
  int rows = 0;
  std::string caseName;
  for (const Comparison& comparison : comparisons) {
    rows += comparison.caseName == caseName ? 1 : 2;
    caseName = comparison.caseName;
  }
  const int bottom = top + rows * rowHeight;
  const Scale scale(comparisons);

  std::ofstream svg(file);
  beginSvg(svg, width, bottom + 16, lightStyle, darkStyle);
  drawText(svg, 16, 24, "title", "Ratio to each peer (right of 1: this library is better)");
  drawGrid(svg, scale, bottom);
  int y = top;
  caseName.clear();
  for (const Comparison& comparison : comparisons) {
    if (comparison.caseName != caseName) {
      caseName = comparison.caseName;
      drawText(svg, 16, y + 14, "case", caseName + ", " + comparison.metric.name);
      y += rowHeight;
    }
    drawRow(svg, scale, comparison, y);
    y += rowHeight;
  }
  endSvg(svg);
  return static_cast<bool>(svg.flush());
}

}  // namespace zeb::bench
