#pragma once

#include "FeedReader.h"
#include "Table.h"

namespace zeb::timeline {

/// The posts as a table, and what had to be replaced by defaults.
void printTimeline(std::ostream& out, const Screen& screen, const Timeline& timeline,
                   const Gaps& gaps);

/// What a document consists of.
void printOverview(std::ostream& out, const Screen& screen, const Value& document);

}  // namespace zeb::timeline
