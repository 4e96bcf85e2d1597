#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Text/NSString+ComposedCharacters.h>
#include <ZEBPlatform/Text/detail/ComposedSequences.h>

#include <string_view>

namespace zeb {

namespace {

/// As `detail::ComposedSequences`, for text of bytes.
class ASCIISequences {
 public:
  explicit ASCIISequences(std::string_view text) noexcept : text_(text) {}

  std::size_t endFrom(std::size_t start) const noexcept {
    return start + (text_.substr(start, 2) == "\r\n" ? 2 : 1);
  }
  std::size_t startOf(std::size_t index) const noexcept {
    return index > 0 && text_.substr(index - 1, 2) == "\r\n" ? index - 1 : index;
  }

 private:
  std::string_view text_;
};

/// Calls `use` with the sequences of the text.
template <class Use>
auto withSequences(const NSString& string, const Use& use) {
  if (string.isASCII()) return use(ASCIISequences(string.asciiView()));
  return use(detail::ComposedSequences(string.utf16View()));
}

}  // namespace

NSRange rangeOfComposedCharacterSequenceAtIndex(const NSString& string, std::size_t index) {
  if (string.isNil()) return {NSNotFound, 0};
  if (index >= string.length()) raiseRange(index, string.length());
  return withSequences(string, [&](auto sequences) {
    const std::size_t start = sequences.startOf(index);
    return NSRange{start, sequences.endFrom(start) - start};
  });
}

NSRange rangeOfComposedCharacterSequencesForRange(const NSString& string, NSRange range) {
  if (string.isNil()) return {NSNotFound, 0};
  const std::size_t length = string.length();
  requireRange(range, length);
  if (range.location == length) return range;
  const std::size_t last = range.location + (range.length ? range.length - 1 : 0);
  return withSequences(string, [&](auto sequences) {
    const std::size_t start = sequences.startOf(range.location);
    return NSRange{start, sequences.endFrom(sequences.startOf(last)) - start};
  });
}

void enumerateComposedCharacterSequences(const NSString& string,
                                         FunctionView<void(NSRange sequence, bool& stop)> block) {
  if (!block) return;
  const NSString text = string.copy();  // the block may change or release the original
  const std::size_t length = text.length();
  withSequences(text, [&](auto sequences) {
    bool stop = false;
    for (std::size_t start = 0; start < length && !stop;) {
      const std::size_t end = sequences.endFrom(start);
      block({start, end - start}, stop);
      start = end;
    }
  });
}

}  // namespace zeb
