#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zeb::bench {

struct Document {
  std::string name;
  std::string text;
};

/// The JSON files of the folder that the environment variable ZEB_BENCH_DATA names, by default
/// ../shared/data. If there are none, generated documents.
const std::vector<Document>& documents();

/// The JSON text of a record with nested parts; different numbers give different records.
std::string makeRecord(std::size_t number);

}  // namespace zeb::bench
