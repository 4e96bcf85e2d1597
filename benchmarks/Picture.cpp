#include "Picture.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>

namespace zeb::bench {

namespace {

constexpr int width = 900;
constexpr int plotLeft = 340;
constexpr int plotRight = 830;
constexpr int top = 64;
constexpr int rowHeight = 20;
constexpr int barHeight = 12;

// The picture has its own background, so that it is readable on any page.
constexpr const char* style =
    "<style>\n"
    "text{font:12px system-ui,sans-serif;fill:#1f2328}.title{font-size:15px;font-weight:600}\n"
    ".case{font-weight:600}.axis{fill:#59636e}.end{text-anchor:end}.middle{text-anchor:middle}\n"
    ".ground{fill:#fff}.grid{stroke:#d1d9e0}.one{stroke:#59636e;stroke-width:2}\n"
    ".better{fill:#2f6fb3}.worse{fill:#c4631d}\n"
    "@media(prefers-color-scheme:dark){text{fill:#e6edf3}.axis{fill:#9198a1}.ground{fill:#0d1117}\n"
    ".grid{stroke:#30363d}.one{stroke:#9198a1}.better{fill:#5b9fe3}.worse{fill:#e8894a}}\n"
    "</style>\n";

std::string escaped(const std::string& text) {
  std::string result;
  for (const char character : text) {
    if (character == '&') {
      result += "&amp;";
    } else if (character == '<') {
      result += "&lt;";
    } else {
      result += character;
    }
  }
  return result;
}

template <class... Arguments>
std::string formatted(const char* format, Arguments... arguments) {
  char text[64];
  std::snprintf(text, sizeof text, format, arguments...);
  return text;
}

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

void drawText(std::ostream& svg, double x, double y, const char* kind, const std::string& text) {
  svg << "<text x=\"" << x << "\" y=\"" << y << "\" class=\"" << kind << "\">" << escaped(text)
      << "</text>\n";
}

void drawGrid(std::ostream& svg, const Scale& scale, int bottom) {
  const int step = (scale.highest - scale.lowest) / 10 + 1;
  for (int exponent = scale.lowest; exponent <= scale.highest; ++exponent) {
    if (exponent % step != 0) continue;
    const double x = scale.placeOf(std::exp2(exponent));
    svg << "<line x1=\"" << x << "\" x2=\"" << x << "\" y1=\"" << top - 8 << "\" y2=\"" << bottom
        << "\" class=\"" << (exponent == 0 ? "one" : "grid") << "\"/>\n";
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
  svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\""
      << bottom + 16 << "\" viewBox=\"0 0 " << width << ' ' << bottom + 16 << "\">\n"
      << style << "<rect width=\"100%\" height=\"100%\" class=\"ground\"/>\n";
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
  svg << "</svg>\n";
  return static_cast<bool>(svg.flush());
}

}  // namespace zeb::bench
