#pragma once

#include <string_view>

namespace zeb {
class CNContactStore;
}

namespace zeb::detail {

// The thread that watches the folder of contacts while there are stores. Any thread.

/// Called by the store's constructor and destructor. Changes count from here on.
void addWatchingStore(CNContactStore& store);
void removeWatchingStore(CNContactStore& store);
/// The folder of contacts may be another one now: tells all stores, and watches that one.
void watchOtherFolder();

/// Whether a file of this name counts as one of contacts.
bool isContactFileName(std::string_view name) noexcept;

}  // namespace zeb::detail
