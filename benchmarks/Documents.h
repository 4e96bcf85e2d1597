#pragma once

#include <string>
#include <vector>

namespace zeb::bench {

struct Document {
  std::string name;
  std::string text;
};

/// The JSON files of the folder ZEB_BENCH_DATA, or else ../shared/data; where there are none,
/// documents made here.
const std::vector<Document>& documents();

}  // namespace zeb::bench
