#pragma once

#include <cstddef>
#include <vector>

namespace zeb::bench {

struct BenchColor {
  double red, green, blue;
};

/// The families in the order in which both sides count them.
inline constexpr std::size_t familyCount = 12;

/// Converts each colour with QColor and adds its families to `counts`. Implemented in a file that
/// may include Qt's headers; without Qt it does not exist.
void classifyWithQt(const std::vector<BenchColor>& colors, std::size_t (&counts)[familyCount]);

}  // namespace zeb::bench
