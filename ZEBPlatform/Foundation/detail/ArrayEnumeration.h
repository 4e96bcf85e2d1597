#pragma once

#include <ZEBPlatform/Foundation/NSArray.h>

#include <cstddef>
#include <cstdint>

namespace zeb::detail {

/// Notices that a mutable array is changed while code of others runs. Costs nothing for immutable
/// arrays. The array must live longer than the check.
class MutationCheck {
 public:
  explicit MutationCheck(const NSArray& array) noexcept
      : array_(array.isMutable() ? array.storageAs<MutableArrayStorage>() : nullptr),
        mutations_(array_ ? array_->mutations : 0) {}

  bool isNeeded() const noexcept { return array_ != nullptr; }
  /// Throws NSException (NSGenericException) if the array was changed.
  void requireUnchanged() const {
    if (array_ && array_->mutations != mutations_) [[unlikely]]
      raiseMutation();
  }

 private:
  [[noreturn]] static void raiseMutation();

  const MutableArrayStorage* array_;
  std::uint64_t mutations_;
};

/// Calls `body(const Value& element, std::size_t index)` for each element in order until it answers
/// false. A body that changes the array makes this throw NSException (NSGenericException) when it
/// returns; the array and the element are kept alive meanwhile.
template <class Body>
[[gnu::always_inline]] inline void enumerate(const NSArray& array, const Body& body) {
  const NSArray kept = array;  // the body may release the caller's handle
  const MutationCheck check(kept);
  if (!check.isNeeded()) {
    const Value* const elements = kept.begin();
    const std::size_t count = kept.count();
    for (std::size_t index = 0; index < count; ++index) {
      if (!body(elements[index], index)) return;
    }
    return;
  }
  for (std::size_t index = 0; index < kept.count(); ++index) {
    const Value element = kept.begin()[index];
    const bool continues = body(element, index);
    check.requireUnchanged();
    if (!continues) return;
  }
}

}  // namespace zeb::detail
