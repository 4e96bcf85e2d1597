#pragma once

#include <ZEBUtilities/Ranges/ZEBFlavoredRange.h>

namespace zeb {

/// A part of a text that leads to a target. Its flavor is always 1.
///
/// Deliberately equality is inherited and ignores the target, but the hash includes it. So two of
/// these that differ in the target alone are equal with different hashes: do not keep them in sets.
class ZEBHyperlinkFlavoredRange : public ZEBFlavoredRange {
 public:
  static constexpr std::int64_t flavor = 1;

  ZEBHyperlinkFlavoredRange() = delete;
  explicit ZEBHyperlinkFlavoredRange(NSRange range, const NSString& rangeURL = nullptr,
                                     const NSString& displayString = nullptr);

  /// As for the base class, with the target. A flavor in the dictionary or the coder is ignored.
  static Ref<ZEBHyperlinkFlavoredRange> initWithPlistDictionary(const NSDictionary& dictionary);
  static Ref<ZEBHyperlinkFlavoredRange> initWithCoder(NSCoder& coder);

  /// Registered as "ZEBHyperlinkFlavoredRange", a subclass of "ZEBFlavoredRange".
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  /// The target as text, which need not be a valid URL; nil if there is none.
  const NSString& rangeURL() const noexcept { return rangeURL_; }

  /// Deliberately the copy has no target.
  Ref<ZEBFlavoredRange> copyWithRangeValue(NSRange rangeValue) const override;
  Ref<ZEBFlavoredRange> copyWithZone(void* zone = nullptr) const override;

  /// As for the base class, and the target with the key "rangeURL" if there is one.
  NSDictionary plistDictionaryValue() const override;
  void encodeWithCoder(NSCoder& coder) const override;

  std::size_t hash() const noexcept override;
  /// The base class's description, a line break, and "URL: " with the target.
  std::string description() const override;

 private:
  const NSString rangeURL_;
};

}  // namespace zeb
