#include <ZEBPlatform/Concurrency/detail/NeverDestroyed.h>
#include <ZEBPlatform/Text/SparesPrivate.h>
#include <ZEBPlatform/Text/WordIteratorPrivate.h>

namespace zeb::detail {

namespace {

void closeIterator(UBreakIterator* iterator) { ubrk_close(iterator); }

auto& spareIterators() {
  static NeverDestroyed<Spares<UBreakIterator, closeIterator>> spares;
  return *spares;
}

UBreakIterator* openIterator() {
  UErrorCode status = U_ZERO_ERROR;
  UBreakIterator* iterator = ubrk_open(UBRK_WORD, "", nullptr, 0, &status);
  return U_SUCCESS(status) ? iterator : nullptr;
}

}  // namespace

WordIterator::WordIterator() : iterator_(spareIterators().take()) {
  if (!iterator_) iterator_ = openIterator();
}

WordIterator::~WordIterator() { spareIterators().give(iterator_); }

}  // namespace zeb::detail
