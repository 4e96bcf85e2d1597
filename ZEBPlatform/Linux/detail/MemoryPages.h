#pragma once

#include <cstddef>

namespace zeb {

/// Returns the memory of all whole pages within these bytes to the system. The bytes still belong
/// to the caller and may be used again, but their content is lost.
void discardPages(void* bytes, std::size_t size) noexcept;

/// Asks the system for large pages behind these bytes if they are several megabytes, because the
/// first use of each small page costs a page fault. The content stays as it is.
void preferLargePages(void* bytes, std::size_t size) noexcept;

}  // namespace zeb
