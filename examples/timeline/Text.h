#pragma once

#include <ZEBPlatform/Foundation/NSString.h>

#include <vector>

namespace zeb::timeline {

/// The text as one line that a terminal can show without harm: white space as single spaces, other
/// control characters and unpaired surrogates as U+FFFD, without the invisible characters that would
/// turn the direction of whatever follows, and without towers of marks.
NSString printable(const NSString& text);

/// Columns that printable text takes in a terminal: right for most scripts and emoji. Where terminals
/// disagree, as a modern one has it: an emoji joined of several takes two columns.
std::size_t displayWidth(const NSString& text);

/// The printable text in lines of at most `width` columns (at least 3), broken at spaces where possible
/// and never within what people see as one character. What does not fit into the lines is cut off, and
/// the last line then ends in "…".
std::vector<NSString> wrapped(const NSString& text, std::size_t width, std::size_t maximumLines);

/// Whether there are letters of the large scripts that run from right to left.
bool hasRightToLeftLetters(const NSString& text);

}  // namespace zeb::timeline
