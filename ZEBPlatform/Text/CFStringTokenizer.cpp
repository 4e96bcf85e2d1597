#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Text/CFStringTokenizer.h>
#include <ZEBPlatform/Text/ICUTextPrivate.h>
#include <ZEBPlatform/Text/TokenTypePrivate.h>

namespace zeb {

namespace {

constexpr NSRange notFound{NSNotFound, 0};

UBreakIterator* asIterator(void* iterator) noexcept {
  return static_cast<UBreakIterator*>(iterator);
}

}  // namespace

CFStringTokenizer::CFStringTokenizer(CFStringTokenizerUnit unit, const char* icuLocale)
    : unit_(unit) {
  UErrorCode status = U_ZERO_ERROR;
  iterator_ = ubrk_open(UBRK_WORD, icuLocale, nullptr, 0, &status);
  if (U_FAILURE(status)) iterator_ = nullptr;
}

CFStringTokenizer::~CFStringTokenizer() { ubrk_close(asIterator(iterator_)); }

void CFStringTokenizer::setString(const NSString& string, NSRange range) {
  requireRange(range, string.length());
  string_ = string.copy();
  range_ = range;
  current_ = notFound;
  next_ = 0;
  widened_.clear();
  if (string_.isASCII()) {
    const std::string_view bytes = string_.asciiView().substr(range.location, range.length);
    widened_.assign(bytes.begin(), bytes.end());
  }
  UErrorCode status = U_ZERO_ERROR;
  if (!iterator_) return;
  const std::u16string_view units = string_.isASCII()
                                        ? std::u16string_view(widened_)
                                        : string_.utf16View().substr(range.location, range.length);
  // Longer texts have no tokens.
  const std::size_t length = detail::fitsICU(units.size()) ? units.size() : 0;
  ubrk_setText(asIterator(iterator_), units.data(), static_cast<std::int32_t>(length), &status);
  if (U_FAILURE(status) || length == 0) range_.length = 0;
}

std::uint64_t CFStringTokenizer::setCurrentToken(std::size_t begin, std::size_t end,
                                                 std::int32_t status) {
  next_ = end;
  if (unit_ == kCFStringTokenizerUnitWord && status < UBRK_WORD_NONE_LIMIT) {
    current_ = notFound;
    return kCFStringTokenizerTokenNone;
  }
  current_ = {range_.location + begin, end - begin};
  const std::u16string_view units = string_.utf16View();  // empty for ASCII
  return detail::tokenTypeOfStatus(
      status, units.empty() ? units : units.substr(current_.location, current_.length));
}

std::uint64_t CFStringTokenizer::goToTokenAtIndex(std::size_t index) {
  current_ = notFound;
  if (!iterator_ || range_.length == 0 || index < range_.location ||
      index - range_.location > range_.length) {
    return kCFStringTokenizerTokenNone;
  }
  index -= range_.location;
  if (index == range_.length) --index;
  // From the end back to the beginning: searching back from the middle of a surrogate pair, the
  // iterator would go one boundary too far.
  const std::int32_t end = ubrk_following(asIterator(iterator_), static_cast<std::int32_t>(index));
  const std::int32_t status = ubrk_getRuleStatus(asIterator(iterator_));
  const std::int32_t begin = ubrk_previous(asIterator(iterator_));
  return setCurrentToken(static_cast<std::size_t>(begin), static_cast<std::size_t>(end), status);
}

std::uint64_t CFStringTokenizer::advanceToNextToken() {
  while (iterator_ && next_ < range_.length) {
    const std::size_t begin = next_;
    const std::int32_t end =
        ubrk_following(asIterator(iterator_), static_cast<std::int32_t>(begin));
    const std::uint64_t type = setCurrentToken(begin, static_cast<std::size_t>(end),
                                               ubrk_getRuleStatus(asIterator(iterator_)));
    if (type != kCFStringTokenizerTokenNone) return type;
  }
  current_ = notFound;
  return kCFStringTokenizerTokenNone;
}

Ref<CFStringTokenizer> CFStringTokenizerCreate(const NSString& string, NSRange range,
                                               CFStringTokenizerUnit unit,
                                               const Ref<NSLocale>& locale) {
  Ref<CFStringTokenizer> tokenizer =
      makeRef<CFStringTokenizer>(unit, locale ? locale->icuName() : "");
  tokenizer->setString(string, range);
  return tokenizer;
}

void CFStringTokenizerSetString(const Ref<CFStringTokenizer>& tokenizer, const NSString& string,
                                NSRange range) {
  if (tokenizer) tokenizer->setString(string, range);
}

std::uint64_t CFStringTokenizerGoToTokenAtIndex(const Ref<CFStringTokenizer>& tokenizer,
                                                std::size_t index) {
  return tokenizer ? tokenizer->goToTokenAtIndex(index)
                   : std::uint64_t{kCFStringTokenizerTokenNone};
}

std::uint64_t CFStringTokenizerAdvanceToNextToken(const Ref<CFStringTokenizer>& tokenizer) {
  return tokenizer ? tokenizer->advanceToNextToken() : std::uint64_t{kCFStringTokenizerTokenNone};
}

NSRange CFStringTokenizerGetCurrentTokenRange(const Ref<CFStringTokenizer>& tokenizer) {
  return tokenizer ? tokenizer->currentTokenRange() : notFound;
}

}  // namespace zeb
