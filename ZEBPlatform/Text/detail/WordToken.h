#pragma once

#include <ZEBPlatform/Text/CFStringTokenizer.h>

namespace zeb::detail {

/// A token between two word boundaries.
struct WordToken {
  NSRange range;
  std::uint64_t type;  ///< of `CFStringTokenizerTokenType`
};

/// The token at this index of the text, as a tokenizer with kCFStringTokenizerUnitWordBoundary over
/// the range finds it. `range` must be inside the text, and should be short: of scripts that need a
/// dictionary the whole range is read. Other scripts need no ICU iterator, which makes this ten
/// times as fast. The first call makes a table of 128 KiB, which takes some milliseconds. Any
/// thread.
WordToken wordTokenAtIndex(const NSString& string, NSRange range, std::size_t index);

/// The same with ICU alone, to which tests compare it.
WordToken wordTokenAtIndexByICU(const NSString& string, NSRange range, std::size_t index);

}  // namespace zeb::detail
