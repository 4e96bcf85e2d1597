#pragma once

#include <ZEBPlatform/Foundation/NSRange.h>
#include <ZEBUtilities/Text/HTMLReferencesPrivate.h>

#include <span>
#include <unordered_map>

namespace zeb::detail {

/// Moves ranges of an escaped text to the same characters of the unescaped text, as if the
/// references, which must outlive this object, were replaced one after the other and each
/// replacement adjusted all ranges:
///   - a range that contains the whole reference shrinks with it;
///   - a range that begins at or after the end of the reference moves with the text behind it;
///   - any other range stays.
///
/// Ranges may be anywhere, also beyond the end of the text; a range whose end exceeds the range of
/// machine words wraps around and contains nothing.
///
/// Each end of a range takes a binary search. An end inside a reference "stays" while the text
/// behind it moves, so that it may get into a later reference and so on; the outcomes of long ways
/// are noted, so that no place is followed twice. All ranges together therefore take at most a few
/// searches for each range, and one for each unit that is inside a reference.
class TextRangeAdjustment {
 public:
  explicit TextRangeAdjustment(std::span<const HTMLReference> references) noexcept
      : references_(references) {}

  NSRange adjusted(NSRange range);

 private:
  /// An end of a range after some references have been replaced.
  struct Place {
    std::size_t position;   ///< in the escaped text
    std::size_t reference;  ///< the first reference that is still to be replaced
  };

  /// The first reference at or after `from` that ends after the position.
  std::size_t firstEndingAfter(std::size_t position, std::size_t from) const noexcept;
  /// Replaces references as long as they are before the place or around it.
  Place settled(Place place);
  /// By how much the references before this one shrink the text.
  std::size_t shrinkBefore(std::size_t reference) const noexcept;

  std::span<const HTMLReference> references_;
  Place last_{0, 0};  ///< where the last range began, before it was settled
  std::unordered_map<std::size_t, Place> settledPlaces_;  ///< by positions inside references
};

}  // namespace zeb::detail
