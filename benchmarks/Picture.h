#pragma once

#include <string>
#include <vector>

#include "Bench.h"

namespace zeb::bench {

/// Draws the ratios as bars on a logarithmic scale around 1, as an SVG file, and returns whether
/// the file could be written. Without results it does nothing and returns true.
bool drawPicture(const std::vector<Comparison>& comparisons, const std::string& file);

}  // namespace zeb::bench
