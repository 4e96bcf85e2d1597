#pragma once

#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Memory/FunctionView.h>

#include <cstddef>

/// What people perceive as one character is often several code units: a letter with its accents, a
/// flag, a family of emoji, a carriage return with its line feed. Such a composed character
/// sequence is an extended grapheme cluster of Unicode Standard Annex 29, in the version of the
/// ICU library. As in ICU, an unpaired surrogate begins a sequence, and marks continue it.
///
/// Any thread may call these functions. Without ICU's data each code point is a sequence.
namespace zeb {

/// The sequence that contains the unit. Throws NSException (NSRangeException) for an index at or
/// past the end; {NSNotFound, 0} on nil.
NSRange rangeOfComposedCharacterSequenceAtIndex(const NSString& string, std::size_t index);

/// The smallest range of whole sequences that contains the range. An empty range gives the sequence
/// at its location, or stays as it is at the end of the text. Throws NSException (NSRangeException)
/// for a range that reaches past the end; {NSNotFound, 0} on nil.
NSRange rangeOfComposedCharacterSequencesForRange(const NSString& string, NSRange range);

/// Calls the block with each sequence in order until it sets `stop`. Takes linear time and, unless
/// the text is mutable, no memory; the block then may change the text, and sees the sequences of
/// the old one. A nil block does nothing.
void enumerateComposedCharacterSequences(const NSString& string,
                                         FunctionView<void(NSRange sequence, bool& stop)> block);

}  // namespace zeb
