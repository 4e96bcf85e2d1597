#include <ZEBPlatform/Foundation/detail/UnicodeTranscoding.h>
#include <ZEBPlatform/Text/detail/ComposedSequences.h>
#include <unicode/ubrk.h>

#include <algorithm>
#include <cstdint>
#include <utility>

namespace zeb::detail {

namespace {

/// ICU counts in 32 bits. A sequence that is longer than this is cut.
constexpr std::size_t maxWindow = std::size_t{1} << 30;
/// How far `startOf` looks back for a boundary that is certain without ICU.
constexpr std::size_t maxLookBack = 64;

/// The thread's break iterator. Has no destructor, so that it can be used until the thread has
/// ended.
struct Kept {
  UBreakIterator* iterator;
  /// Counts the texts that the iterator was given, so that an object notices that another one has
  /// used the iterator meanwhile.
  std::uint64_t placements;
};
thread_local constinit Kept kept{};

/// Closes the iterator when the thread ends. A later use on the same thread opens another one.
struct Closer {
  bool isArmed = false;
  ~Closer() {
    if (UBreakIterator* iterator = std::exchange(kept.iterator, nullptr)) ubrk_close(iterator);
  }
};
thread_local Closer closer;

/// Null if ICU has no data.
UBreakIterator* threadIterator() noexcept {
  if (!kept.iterator) {
    UErrorCode status = U_ZERO_ERROR;
    kept.iterator = ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status);
    closer.isArmed = true;
  }
  return kept.iterator;
}

std::size_t codePointStart(std::u16string_view units, std::size_t index) noexcept {
  const bool isSecondHalf =
      index > 0 && isLowSurrogate(units[index]) && isHighSurrogate(units[index - 1]);
  return index - isSecondHalf;
}

std::size_t codePointEnd(std::u16string_view units, std::size_t start) noexcept {
  nextScalar(units, start);
  return start;
}

}  // namespace

ComposingClass ComposedSequences::classBefore(std::size_t index) const noexcept {
  return classAt(codePointStart(units_, index - 1), index);
}

std::size_t ComposedSequences::endFrom(std::size_t start) {
  const std::size_t end = knownEndFrom(start);
  return end == unknownEnd ? endByICU(start) : end;
}

// The rules GB3 to GB13 of the annex.
std::size_t ComposedSequences::knownEndFrom(std::size_t start) const noexcept {
  std::size_t next;
  const ComposingClass first = classAt(start, next);
  if (first == ComposingClass::unknown) return unknownEnd;
  if (first == ComposingClass::control || first == ComposingClass::lineFeed) return next;
  if (first == ComposingClass::carriageReturn) {
    return next < units_.size() && units_[next] == '\n' ? next + 1 : next;
  }

  bool endsWithPictograph = first == ComposingClass::pictograph;  // and what extends it
  bool isHalfFlag = first == ComposingClass::regionalIndicator;
  bool joinsPictograph = false;
  while (next < units_.size()) {
    const std::size_t end = next;
    switch (classAt(end, next)) {
      case ComposingClass::unknown:
        return unknownEnd;
      case ComposingClass::extending:
        joinsPictograph = false;
        break;
      case ComposingClass::joiner:
        joinsPictograph = std::exchange(endsWithPictograph, false);
        break;
      case ComposingClass::pictograph:
        if (!joinsPictograph) return end;
        joinsPictograph = false;
        endsWithPictograph = true;
        break;
      case ComposingClass::regionalIndicator:
        if (!isHalfFlag) return end;
        break;
      default:
        return end;
    }
    isHalfFlag = false;
  }
  return units_.size();
}

bool ComposedSequences::isCertainBoundary(std::size_t index) const noexcept {
  std::size_t next;
  const ComposingClass after = classAt(index, next);
  const ComposingClass before = classBefore(index);
  if (before == ComposingClass::unknown) return false;
  if (after == ComposingClass::plain || after == ComposingClass::control) return true;
  return before == ComposingClass::plain &&
         (after == ComposingClass::pictograph || after == ComposingClass::regionalIndicator ||
          after == ComposingClass::carriageReturn);
}

std::size_t ComposedSequences::startOf(std::size_t index) {
  const std::size_t codePoint = codePointStart(units_, index);
  std::size_t start = codePoint;
  while (start > 0 && !isCertainBoundary(start)) {
    if (index - start > maxLookBack) return startByICU(codePoint);
    start = codePointStart(units_, start - 1);
  }
  for (std::size_t end; (end = endFrom(start)) <= index;) start = end;
  return start;
}

bool ComposedSequences::placeWindow(std::size_t start) {
  UBreakIterator* iterator = threadIterator();
  if (!iterator) return false;
  const std::u16string_view window = units_.substr(start, maxWindow);
  UErrorCode status = U_ZERO_ERROR;
  ubrk_setText(iterator, window.data(), static_cast<std::int32_t>(window.size()), &status);
  placement_ = ++kept.placements;
  windowStart_ = start;
  windowEnd_ = start + window.size();
  return U_SUCCESS(status);
}

std::size_t ComposedSequences::endByICU(std::size_t start) {
  const bool isInPlace =
      placement_ == kept.placements && placement_ != 0 &&
      windowStart_ + static_cast<std::size_t>(ubrk_current(kept.iterator)) == start;
  if (!isInPlace && !placeWindow(start)) return codePointEnd(units_, start);
  const auto next = [this] {
    const std::int32_t length = ubrk_next(kept.iterator);
    return length == UBRK_DONE ? windowEnd_ : windowStart_ + static_cast<std::size_t>(length);
  };
  std::size_t end = next();
  const bool isCut = end == windowEnd_ && end < units_.size() && start > windowStart_;
  if (isCut && placeWindow(start)) end = next();
  return end;
}

std::size_t ComposedSequences::startByICU(std::size_t codePoint) {
  const std::size_t windowStart = codePoint > maxWindow / 2 ? codePoint - maxWindow / 2 : 0;
  if (!placeWindow(windowStart)) return codePoint;
  const std::size_t end = codePointEnd(units_, codePoint) - windowStart;
  const std::int32_t start = ubrk_preceding(kept.iterator, static_cast<std::int32_t>(end));
  return windowStart + static_cast<std::size_t>(std::max(start, 0));
}

}  // namespace zeb::detail
