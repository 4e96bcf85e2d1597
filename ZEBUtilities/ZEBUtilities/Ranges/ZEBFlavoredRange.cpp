#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Geometry/NSValue.h>
#include <ZEBPlatform/KeyedCoding/CoderConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Collections/NSDictionary+ZEBAdditions.h>
#include <ZEBUtilities/Ranges/FlavoredRangeKeysPrivate.h>
#include <ZEBUtilities/Ranges/ZEBFlavoredRange.h>

#include <typeinfo>

namespace zeb {

namespace {

/// The two numbers of a range as the types that read them give them.
template <class Integer>
NSRange rangeOf(Integer location, Integer length) noexcept {
  return {static_cast<std::size_t>(location), static_cast<std::size_t>(length)};
}

}  // namespace

ZEBFlavoredRange::ZEBFlavoredRange(NSRange rangeValue, std::int64_t rangeFlavor,
                                   const NSString& displayString)
    : rangeValue_(rangeValue), rangeFlavor_(rangeFlavor), displayString_(displayString.copy()) {}

ZEBFlavoredRange::Fields ZEBFlavoredRange::fieldsIn(const NSDictionary& dictionary) {
  return {rangeOf(zeb_intForKey(dictionary, detail::rangeLocationKey),
                  zeb_intForKey(dictionary, detail::rangeLengthKey)),
          zeb_intForKey(dictionary, detail::rangeFlavorKey),
          zeb_stringForKey(dictionary, detail::displayStringKey)};
}

ZEBFlavoredRange::Fields ZEBFlavoredRange::fieldsIn(NSCoder& coder) {
  return {rangeOf(coder.decodeIntegerForKey(detail::rangeLocationKey),
                  coder.decodeIntegerForKey(detail::rangeLengthKey)),
          coder.decodeInt32ForKey(detail::rangeFlavorKey),
          coder.decodeStringForKey(detail::displayStringKey)};
}

Ref<ZEBFlavoredRange> ZEBFlavoredRange::initWithPlistDictionary(const NSDictionary& dictionary) {
  if (dictionary.isNil()) return nullptr;
  const Fields fields = fieldsIn(dictionary);
  return makeRef<ZEBFlavoredRange>(fields.rangeValue, fields.rangeFlavor, fields.displayString);
}

Ref<ZEBFlavoredRange> ZEBFlavoredRange::initWithCoder(NSCoder& coder) {
  const Fields fields = fieldsIn(coder);
  return makeRef<ZEBFlavoredRange>(fields.rangeValue, fields.rangeFlavor, fields.displayString);
}

Ref<ZEBFlavoredRange> ZEBFlavoredRange::copyWithRangeValue(NSRange rangeValue) const {
  return makeRef<ZEBFlavoredRange>(rangeValue, rangeFlavor_, displayString_);
}

Ref<ZEBFlavoredRange> ZEBFlavoredRange::copyWithZone(void*) const {
  return makeRef<ZEBFlavoredRange>(rangeValue_, rangeFlavor_, displayString_);
}

NSDictionary ZEBFlavoredRange::plistDictionaryValue() const {
  NSMutableDictionary dictionary{
      {detail::rangeLocationKey, std::uint64_t{rangeValue_.location}},
      {detail::rangeLengthKey, std::uint64_t{rangeValue_.length}},
      {detail::rangeFlavorKey, rangeFlavor_},
  };
  if (displayString_) dictionary.setObject(displayString_, detail::displayStringKey);
  return dictionary.copy();
}

void ZEBFlavoredRange::encodeWithCoder(NSCoder& coder) const {
  coder.encodeInteger(static_cast<std::int64_t>(rangeValue_.location), detail::rangeLocationKey);
  coder.encodeInteger(static_cast<std::int64_t>(rangeValue_.length), detail::rangeLengthKey);
  coder.encodeInt32(static_cast<std::int32_t>(rangeFlavor_), detail::rangeFlavorKey);
  coder.encodeObject(displayString_, detail::displayStringKey);
}

bool ZEBFlavoredRange::isEqual(const NSObject& other) const {
  if (typeid(*this) != typeid(other)) return false;
  const auto& range = static_cast<const ZEBFlavoredRange&>(other);
  return rangeValue_ == range.rangeValue_ && rangeFlavor_ == range.rangeFlavor_ &&
         displayString_.isEqualToString(range.displayString_);
}

std::size_t ZEBFlavoredRange::hash() const noexcept {
  const std::size_t ofText = displayString_ ? displayString_.hash() : 0;
  return (ofText * 19 + NSValue(rangeValue_).hash()) * 19 + static_cast<std::size_t>(rangeFlavor_);
}

NSComparisonResult ZEBFlavoredRange::compare(const Value& other) const {
  return ZEBActiveTextRangesCompare(Ref(const_cast<ZEBFlavoredRange*>(this)), other);
}

std::string ZEBFlavoredRange::description() const {
  return formattedText("<%@: %zd, %@, (%@)>", {className(), rangeFlavor_,
                                               NSValue(rangeValue_).description(), displayString_});
}

Class* ZEBFlavoredRange::runtimeClass() {
  using Self = ZEBFlavoredRange;
  static Class* const cls = registerClass(
      "ZEBFlavoredRange",
      {
          classMethod("initWithRangeValue:rangeFlavor:displayString:",
                      [](const Value& range, std::int64_t flavor, const NSString& displayString) {
                        return makeRef<Self>(rangeArgument(range), flavor, displayString);
                      }),
          classMethod("initWithRangeValue:rangeFlavor:",
                      [](const Value& range, std::int64_t flavor) {
                        return makeRef<Self>(rangeArgument(range), flavor);
                      }),
          classMethod("initWithRangeValue:",
                      [](const Value& range) { return makeRef<Self>(rangeArgument(range)); }),
          classMethod("initWithPlistDictionary:", &Self::initWithPlistDictionary),
          property("rangeValue", [](const Self& self) { return boxed(self.rangeValue()); }),
          property("rangeFlavor", &Self::rangeFlavor),
          property("displayString", &Self::displayString),
          method("copyWithRangeValue:",
                 [](const Self& self, const Value& range) {
                   return self.copyWithRangeValue(rangeArgument(range));
                 }),
          method("copyWithZone:", &Self::copyWithZone),
          method(
              "encodeWithCoder:",
              [](const Self& self, NSCoder* coder) { self.encodeWithCoder(coderArgument(coder)); }),
          classMethod("initWithCoder:",
                      [](NSCoder* coder) { return initWithCoder(coderArgument(coder)); }),
          method("plistDictionaryValue", &Self::plistDictionaryValue),
          method("compare:", &Self::compare),
      });
  return cls;
}

}  // namespace zeb
