#pragma once

#include <unicode/ubrk.h>

namespace zeb::detail {

/// ICU's iterator over the word boundaries of no particular language, borrowed for the life of this
/// object. Null if ICU's data are missing. The iterator keeps a pointer to the text that was set;
/// the next borrower must set another text before anything else.
class WordIterator {
 public:
  WordIterator();
  WordIterator(const WordIterator&) = delete;
  WordIterator& operator=(const WordIterator&) = delete;
  ~WordIterator();

  UBreakIterator* get() const noexcept { return iterator_; }

 private:
  UBreakIterator* iterator_;
};

}  // namespace zeb::detail
