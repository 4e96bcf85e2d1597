#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <vector>

namespace zeb::timeline {

/// The text as one line that is safe for a terminal. White space becomes single spaces, other
/// control characters and unpaired surrogates become U+FFFD. Invisible characters that would change
/// the direction of the following text are removed, and so are marks on one letter beyond a limit.
NSString printable(const NSString& text);

/// The number of columns that printable text takes in a terminal, for most scripts and emoji. Where
/// terminals differ, it follows modern ones: an emoji that consists of several takes two columns.
std::size_t displayWidth(const NSString& text);

/// The printable text in lines of at most `width` columns (at least 3). Lines are broken at spaces
/// if possible, and never inside a visible character. Text that does not fit is cut off, and the
/// last line then ends in "…".
std::vector<NSString> wrapped(const NSString& text, std::size_t width, std::size_t maximumLines);

}  // namespace zeb::timeline
