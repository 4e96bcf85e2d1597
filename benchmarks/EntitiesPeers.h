#pragma once

#include <functional>
#include <string>

namespace zeb::bench {

/// What both sides say of a text: bit 0 if it has right-to-left characters, bit 1 if it should be
/// rendered from the right.
using DirectionWork = std::function<unsigned()>;

/// The same work over the units of a QString that is made beforehand. Implemented in a file that
/// may include Qt's headers; without Qt it does not exist.
DirectionWork directionWorkWithQt(const std::u16string& text);

}  // namespace zeb::bench
