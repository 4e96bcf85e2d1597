#pragma once

#include "FeedReader.h"
#include "Table.h"

namespace zeb::timeline {

/// Prints the posts as a table, and the counts of values that were replaced by defaults.
void printTimeline(std::ostream& out, const Screen& screen, const Timeline& timeline,
                   const Gaps& gaps);

/// Prints what a document consists of.
void printOverview(std::ostream& out, const Screen& screen, const Value& document);

}  // namespace zeb::timeline
