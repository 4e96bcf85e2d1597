#pragma once

#include <ZEBPlatform/KeyedCoding/NSCoder.h>
#include <ZEBPlatform/Memory/NSObject.h>
#include <ZEBUtilities/Ranges/ZEBActiveTextRange.h>
#include <ZEBUtilities/Ranges/ZEBPlistSerialization.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace zeb {

/// An active part of a text: where it lies, its flavor, and optionally the text to show in its
/// place. Flavors are numbers of the application, except that 1 means a hyperlink. Immutable, so
/// any thread may use it. Made with `makeRef<ZEBFlavoredRange>(…)`.
class ZEBFlavoredRange : public NSObject,
                         public ZEBActiveTextRange,
                         public ZEBPlistSerialization,
                         public NSSecureCoding {
 public:
  ZEBFlavoredRange() = delete;
  explicit ZEBFlavoredRange(NSRange rangeValue, std::int64_t rangeFlavor = 0,
                            const NSString& displayString = nullptr);

  /// Reads the form that `plistDictionaryValue` writes; nil on nil. The numbers are read as 32-bit
  /// integers (`zeb_intForKey`), although they are written with 64 bits: larger ones are
  /// deliberately cut. A value of another kind counts as missing.
  static Ref<ZEBFlavoredRange> initWithPlistDictionary(const NSDictionary& dictionary);
  /// See `NSKeyedUnarchiver`.
  static Ref<ZEBFlavoredRange> initWithCoder(NSCoder& coder);

  /// Registered as "ZEBFlavoredRange", with all functions here under their selectors. The
  /// initialisers are class methods there.
  static Class* runtimeClass();
  Class* classObject() const override { return runtimeClass(); }

  NSRange rangeValue() const override { return rangeValue_; }
  std::int64_t rangeFlavor() const noexcept { return rangeFlavor_; }
  const NSString& displayString() const noexcept { return displayString_; }

  /// An object of this object's class with another range, the same flavor and the same display
  /// string. Deliberately it keeps no field that a subclass adds. A subclass overrides this and
  /// `copyWithZone`, so that the class is kept.
  virtual Ref<ZEBFlavoredRange> copyWithRangeValue(NSRange rangeValue) const;
  /// An object with the same fields. The zone is ignored.
  virtual Ref<ZEBFlavoredRange> copyWithZone(void* zone = nullptr) const;

  /// A dictionary with the keys "rangeValueLocation", "rangeValueLength", "rangeFlavor" and, if
  /// there is a display string, "displayString".
  NSDictionary plistDictionaryValue() const override;
  /// Writes the same keys. The flavor is cut to 32 bits.
  void encodeWithCoder(NSCoder& coder) const override;

  /// Deliberately an object without display string is equal to none, not even to itself. Otherwise
  /// objects are equal if they have the same class, range, flavor and display string; fields of
  /// subclasses are not compared.
  bool isEqual(const NSObject& other) const override;
  std::size_t hash() const noexcept override;
  /// As `ZEBActiveTextRangesCompare`.
  NSComparisonResult compare(const Value& other) const;
  /// "<ClassName: flavor, {location, length}, (display string)>".
  std::string description() const override;

 protected:
  /// What the property-list and the keyed form contain.
  struct Fields {
    NSRange rangeValue;
    std::int64_t rangeFlavor;
    NSString displayString;
  };
  static Fields fieldsIn(const NSDictionary& dictionary);
  static Fields fieldsIn(NSCoder& coder);

 private:
  const NSRange rangeValue_;
  const std::int64_t rangeFlavor_;
  const NSString displayString_;
};

}  // namespace zeb
