#pragma once

#include <cstdio>
#include <ostream>
#include <string>

namespace zeb::bench {

/// Writes the start of a picture: its size, the style of texts and grids in light and dark pages,
/// the rules that the picture adds for each of the two, and the background.
void beginSvg(std::ostream& svg, int width, int height, const std::string& lightStyle,
              const std::string& darkStyle);
void endSvg(std::ostream& svg);

/// The kinds are classes of the style, such as "title", "axis middle", "case", "end".
void drawText(std::ostream& svg, double x, double y, const char* kind, const std::string& text);
void drawLine(std::ostream& svg, double x1, double y1, double x2, double y2,
              const std::string& kind);

template <class... Arguments>
std::string formatted(const char* format, Arguments... arguments) {
  char text[64];
  std::snprintf(text, sizeof text, format, arguments...);
  return text;
}

}  // namespace zeb::bench
