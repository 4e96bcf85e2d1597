#include "GrowthPicture.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <string_view>

#include "Svg.h"

namespace zeb::bench {

namespace {

// Each plot has a cell of the picture, with the title above and the legend on the right.
constexpr int columns = 2;
constexpr int cellWidth = 610;
constexpr int cellHeight = 290;
constexpr int plotLeft = 64;
constexpr int plotTop = 38;
constexpr int plotWidth = 320;
constexpr int plotHeight = 200;
constexpr int header = 64;

constexpr const char* titles[growthPlots] = {"JSON and archives",
                                             "Collections",
                                             "Adding and removing observers",
                                             "One change that all observers get",
                                             "Timers and operations",
                                             "Posts"};

constexpr const char* lightColors[] = {"#2f6fb3", "#c4631d", "#2e8b57", "#8250df",
                                       "#cf222e", "#1b7c83", "#9a6700", "#bf3989"};
constexpr const char* darkColors[] = {"#5b9fe3", "#e8894a", "#56d38a", "#bc8cff",
                                      "#ff7b72", "#4cc9d0", "#d9a521", "#f778ba"};

template <std::size_t count>
std::string colorRules(const char* const (&colors)[count]) {
  std::string rules;
  for (std::size_t index = 0; index < count; ++index) {
    rules += formatted(".c%zu{stroke:%s;fill:%s}", index, colors[index], colors[index]);
  }
  return rules;
}

std::string colorOf(std::size_t curve) { return formatted("c%zu", curve % std::size(lightColors)); }

/// The place of one plot, and the decades that its axes show.
class Plot {
 public:
  Plot(std::ostream& svg, int left, int top, std::vector<const GrowthCurve*> curves)
      : svg_(svg), left_(left + plotLeft), top_(top + plotTop), curves_(std::move(curves)) {
    const auto isCheaper = [](const GrowthCurve::Point& one, const GrowthCurve::Point& other) {
      return one.nanosecondsEach() < other.nanosecondsEach();
    };
    double lowest = 1e9, highest = 0;
    for (const GrowthCurve* curve : curves_) {
      const auto [least, most] = std::ranges::minmax_element(curve->points, isCheaper);
      lowest = std::min(lowest, least->nanosecondsEach());
      highest = std::max(highest, most->nanosecondsEach());
    }
    lowestDecade_ = static_cast<int>(std::floor(std::log10(lowest)));
    highestDecade_ = static_cast<int>(std::ceil(std::log10(highest)));
  }

  void draw(const char* title) {
    drawText(svg_, left_, top_ - 14, "case", title);
    drawGrid();
    drawGuides();
    drawCurves();
  }

 private:
  double xOf(double elements) const {
    return left_ + std::log10(elements) / std::log10(maxGrowthElements) * plotWidth;
  }
  double yOf(double nanoseconds) const {
    return top_ + plotHeight * (highestDecade_ - std::log10(nanoseconds)) /
                      (highestDecade_ - lowestDecade_);
  }

  void drawGrid() {
    const double right = left_ + plotWidth, bottom = top_ + plotHeight;
    for (std::size_t elements = 1, zeros = 0; elements <= maxGrowthElements; elements *= 10) {
      const double x = xOf(static_cast<double>(elements));
      drawLine(svg_, x, top_, x, bottom, "grid");
      const char* const units[] = {"", "k", "M"};
      const std::size_t number[] = {1, 10, 100};
      drawText(svg_, x, bottom + 18, "axis middle",
               formatted("%zu%s", number[zeros % 3], units[zeros / 3]));
      ++zeros;
    }
    for (int decade = lowestDecade_; decade <= highestDecade_; ++decade) {
      const double y = yOf(std::pow(10, decade));
      drawLine(svg_, left_, y, right, y, "grid");
      const char* const unit = decade < 3 ? "ns" : decade < 6 ? "µs" : "ms";
      const double value = std::pow(10, decade < 3 ? decade : decade % 3);
      drawText(svg_, left_ - 8, y + 4, "axis end", formatted("%g %s", value, unit));
    }
  }

  /// Two laws of growth, from 100 elements at the lowest cost on.
  void drawGuides() {
    double lowest = 1e9;
    for (const GrowthCurve* curve : curves_) {
      lowest = std::min(lowest, curve->points[2].nanosecondsEach());
    }
    const double start = 100, end = static_cast<double>(maxGrowthElements);
    const double log = lowest * std::log(end) / std::log(start);
    drawLine(svg_, xOf(start), yOf(lowest), xOf(end), yOf(log), "guide");
    const double highest = std::pow(10, highestDecade_);
    const double endOfSquare = std::min(end, start * highest / lowest);
    drawLine(svg_, xOf(start), yOf(lowest), xOf(endOfSquare), yOf(lowest * endOfSquare / start),
             "guide");
  }

  /// The legend has the order of the curves' ends.
  void drawCurves() {
    std::ranges::sort(curves_, [](const GrowthCurve* one, const GrowthCurve* other) {
      return one->points.back().seconds > other->points.back().seconds;
    });
    int y = top_ + 8;
    for (std::size_t index = 0; index < curves_.size(); ++index, y += 22) {
      const GrowthCurve& curve = *curves_[index];
      const std::string color = colorOf(index);
      svg_ << "<polyline class=\"curve " << color << "\" points=\"";
      for (const auto& point : curve.points) {
        svg_ << xOf(static_cast<double>(point.elements)) << ',' << yOf(point.nanosecondsEach())
             << ' ';
      }
      svg_ << "\"/>\n";
      for (const auto& point : curve.points) {
        svg_ << "<circle r=\"2.5\" class=\"" << color << "\" cx=\""
             << xOf(static_cast<double>(point.elements)) << "\" cy=\""
             << yOf(point.nanosecondsEach()) << "\"/>\n";
      }
      const int legend = left_ + plotWidth + 12;
      drawLine(svg_, legend, y - 4, legend + 18, y - 4, "curve " + color);
      std::string text = curve.name + formatted("  %.2f", curve.exponent());
      if (curve.verdict() != std::string_view("ok")) text += formatted(", %s", curve.verdict());
      drawText(svg_, legend + 24, y, "", text);
    }
  }

  std::ostream& svg_;
  const int left_;
  const int top_;
  std::vector<const GrowthCurve*> curves_;
  int lowestDecade_;
  int highestDecade_;
};

}  // namespace

bool drawGrowth(const std::vector<GrowthCurve>& curves, const std::string& file) {
  std::vector<const GrowthCurve*> groups[growthPlots];
  for (const GrowthCurve& curve : curves) {
    groups[static_cast<std::size_t>(curve.plot)].push_back(&curve);
  }
  const auto shown = static_cast<int>(
      std::ranges::count_if(groups, [](const auto& group) { return !group.empty(); }));
  if (shown == 0) return true;
  const int rows = (shown + columns - 1) / columns;

  std::ofstream svg(file);
  const std::string both =
      ".curve{fill:none;stroke-width:1.8}.guide{stroke:#9198a1;"
      "stroke-dasharray:4 4}";
  beginSvg(svg, columns * cellWidth, header + rows * cellHeight, colorRules(lightColors) + both,
           colorRules(darkColors) + ".curve{fill:none}");
  drawText(svg, 16, 24, "title", "Processor time of one element, by the number of elements");
  drawText(svg, 16, 44, "axis",
           "A flat curve is linear growth. Dashed: n log n and n². Numbers: the fitted exponents.");
  int place = 0;
  for (std::size_t group = 0; group < growthPlots; ++group) {
    if (groups[group].empty()) continue;
    Plot(svg, place % columns * cellWidth, header + place / columns * cellHeight, groups[group])
        .draw(titles[group]);
    ++place;
  }
  endSvg(svg);
  return static_cast<bool>(svg.flush());
}

}  // namespace zeb::bench
