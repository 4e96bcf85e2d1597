#include "Svg.h"

namespace zeb::bench {

namespace {

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

}  // namespace

// The picture has its own background, so that it is readable on any page.
void beginSvg(std::ostream& svg, int width, int height, const std::string& lightStyle,
              const std::string& darkStyle) {
  svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << width << "\" height=\"" << height
      << "\" viewBox=\"0 0 " << width << ' ' << height
      << "\">\n<style>\n"
         "text{font:12px system-ui,sans-serif;fill:#1f2328}"
         ".title{font-size:15px;font-weight:600}\n"
         ".case{font-weight:600}.axis{fill:#59636e}.end{text-anchor:end}"
         ".middle{text-anchor:middle}\n"
         ".ground{fill:#fff}.grid{stroke:#d1d9e0}.one{stroke:#59636e;stroke-width:2}\n"
      << lightStyle
      << "\n@media(prefers-color-scheme:dark){text{fill:#e6edf3}.axis{fill:#9198a1}"
         ".ground{fill:#0d1117}\n.grid{stroke:#30363d}.one{stroke:#9198a1}"
      << darkStyle << "}\n</style>\n<rect width=\"100%\" height=\"100%\" class=\"ground\"/>\n";
}

void endSvg(std::ostream& svg) { svg << "</svg>\n"; }

void drawText(std::ostream& svg, double x, double y, const char* kind, const std::string& text) {
  svg << "<text x=\"" << x << "\" y=\"" << y << "\" class=\"" << kind << "\">" << escaped(text)
      << "</text>\n";
}

void drawLine(std::ostream& svg, double x1, double y1, double x2, double y2,
              const std::string& kind) {
  svg << "<line x1=\"" << x1 << "\" x2=\"" << x2 << "\" y1=\"" << y1 << "\" y2=\"" << y2
      << "\" class=\"" << kind << "\"/>\n";
}

}  // namespace zeb::bench
