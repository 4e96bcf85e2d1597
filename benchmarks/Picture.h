#pragma once

#include <string>
#include <vector>

#include "Bench.h"

namespace zeb::bench {

/// Draws the ratios as bars on a logarithmic scale around 1, as an SVG file. Answers whether it could
/// be written; without results there is nothing to draw, and the file stays as it is.
bool drawPicture(const std::vector<Comparison>& comparisons, const std::string& file);

}  // namespace zeb::bench
