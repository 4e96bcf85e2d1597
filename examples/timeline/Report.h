#pragma once

#include "FeedReader.h"
#include "Friends.h"
#include "Table.h"

namespace zeb::timeline {

/// Prints the posts as a table, and the counts of values that were replaced by defaults.
void printTimeline(std::ostream& out, const Screen& screen, const Timeline& timeline,
                   const Gaps& gaps);

/// Prints the authors who are in the address book, if there are any.
void printFriends(std::ostream& out, const Screen& screen, const std::vector<Friend>& friends);

/// Prints what a document consists of.
void printOverview(std::ostream& out, const Screen& screen, const Value& document);

}  // namespace zeb::timeline
