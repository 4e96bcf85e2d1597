#include <ZEBPlatform/Foundation/detail/NaturalOrder.h>
#include <ZEBPlatform/Linux/detail/Random.h>
#include <ZEBPlatform/Runtime/Send.h>
#include <ZEBUtilities/Collections/ElementOrderPrivate.h>
#include <ZEBUtilities/Collections/NSArray+ZEBAdditions.h>

namespace zeb {

namespace {

NSComparisonResult compareBySending(SEL selector, const Value& left, const Value& right) {
  detail::requireMethod(left, selector);
  return send<NSComparisonResult>(left, selector, right);
}

}  // namespace

NSComparisonResult detail::compareElements(const Value& left, const Value& right) {
  if (const auto order = naturalOrder(left, right)) return *order;
  return compareBySending("compare:"_sel, left, right);
}

NSComparator detail::elementComparator(const NSArray& array) noexcept {
  return hasNaturalOrder(array) ? NSComparator() : NSComparator(compareElements);
}

NSArray zeb_sortedArray(const NSArray& array) {
  return array.sortedArrayWithOptions(NSSortStable, detail::elementComparator(array));
}

NSArray zeb_reverseSortedArray(const NSArray& array) {
  return array.sortedArrayWithOptions(NSSortStable, [](const Value& left, const Value& right) {
    return compareBySending("reverseCompare:"_sel, left, right);
  });
}

NSMutableArray zeb_shuffledArray(const NSArray& array) {
  NSMutableArray shuffled = array.mutableCopy();
  RandomNumbers random(array.count());
  for (std::size_t left = array.count(); left > 0; --left) {
    const std::uint32_t chosen = random.below(static_cast<std::uint32_t>(left));
    shuffled.exchangeObjectAtIndex(left - 1, chosen);
  }
  return shuffled;
}

}  // namespace zeb
