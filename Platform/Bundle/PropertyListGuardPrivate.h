#pragma once

#include <string_view>

namespace zeb::detail {

/// What the parsers of outside libraries must not be given: they recurse over nesting, write shared objects
/// out each time, and trust the kinds of keys. Both answer null for a document within the limits, else what
/// is wrong with it. A document that passes can still be malformed.
const char* faultOfXMLPropertyList(std::string_view document) noexcept;
const char* faultOfBinaryPropertyList(std::string_view document);

}  // namespace zeb::detail
