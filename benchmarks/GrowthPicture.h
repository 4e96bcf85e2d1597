#pragma once

#include <string>
#include <vector>

#include "Growth.h"

namespace zeb::bench {

/// Draws the time of one element over the number of elements, on logarithmic axes, as an SVG file
/// with one plot for each kind of work. Returns whether the file could be written. Without curves
/// it does nothing and returns true.
bool drawGrowth(const std::vector<GrowthCurve>& curves, const std::string& file);

}  // namespace zeb::bench
