#include <ZEBPlatform/Foundation/Format.h>
#include <ZEBPlatform/Geometry/NSValue.h>
#include <ZEBPlatform/KeyedCoding/CoderConversion.h>
#include <ZEBPlatform/Runtime/Registration.h>
#include <ZEBUtilities/Collections/NSDictionary+ZEBAdditions.h>
#include <ZEBUtilities/Ranges/FlavoredRangeKeysPrivate.h>
#include <ZEBUtilities/Ranges/ZEBHyperlinkFlavoredRange.h>

namespace zeb {

ZEBHyperlinkFlavoredRange::ZEBHyperlinkFlavoredRange(NSRange range, const NSString& rangeURL,
                                                     const NSString& displayString)
    : ZEBFlavoredRange(range, flavor, displayString), rangeURL_(rangeURL.copy()) {}

Ref<ZEBHyperlinkFlavoredRange> ZEBHyperlinkFlavoredRange::initWithPlistDictionary(
    const NSDictionary& dictionary) {
  if (dictionary.isNil()) return nullptr;
  const Fields fields = fieldsIn(dictionary);
  return makeRef<ZEBHyperlinkFlavoredRange>(
      fields.rangeValue, zeb_stringForKey(dictionary, detail::rangeURLKey), fields.displayString);
}

Ref<ZEBHyperlinkFlavoredRange> ZEBHyperlinkFlavoredRange::initWithCoder(NSCoder& coder) {
  const NSString target = coder.decodeStringForKey(detail::rangeURLKey);
  const Fields fields = fieldsIn(coder);
  return makeRef<ZEBHyperlinkFlavoredRange>(fields.rangeValue, target, fields.displayString);
}

Ref<ZEBFlavoredRange> ZEBHyperlinkFlavoredRange::copyWithRangeValue(NSRange rangeValue) const {
  return makeRef<ZEBHyperlinkFlavoredRange>(rangeValue, nullptr, displayString());
}

Ref<ZEBFlavoredRange> ZEBHyperlinkFlavoredRange::copyWithZone(void*) const {
  return makeRef<ZEBHyperlinkFlavoredRange>(rangeValue(), rangeURL_, displayString());
}

NSDictionary ZEBHyperlinkFlavoredRange::plistDictionaryValue() const {
  NSMutableDictionary dictionary = ZEBFlavoredRange::plistDictionaryValue().mutableCopy();
  if (rangeURL_) dictionary.setObject(rangeURL_, detail::rangeURLKey);
  return dictionary.copy();
}

void ZEBHyperlinkFlavoredRange::encodeWithCoder(NSCoder& coder) const {
  coder.encodeObject(rangeURL_, detail::rangeURLKey);
  ZEBFlavoredRange::encodeWithCoder(coder);
}

std::size_t ZEBHyperlinkFlavoredRange::hash() const noexcept {
  return ZEBFlavoredRange::hash() * 19 + (rangeURL_ ? rangeURL_.hash() : 0);
}

std::string ZEBHyperlinkFlavoredRange::description() const {
  return formattedText("%@\nURL: %@", {ZEBFlavoredRange::description(), rangeURL_});
}

Class* ZEBHyperlinkFlavoredRange::runtimeClass() {
  using Self = ZEBHyperlinkFlavoredRange;
  static Class* const cls = registerClass(
      "ZEBHyperlinkFlavoredRange", ZEBFlavoredRange::runtimeClass(),
      {
          classMethod(
              "initWithRange:rangeURL:displayString:",
              [](const Value& range, const NSString& rangeURL, const NSString& displayString) {
                return makeRef<Self>(rangeArgument(range), rangeURL, displayString);
              }),
          // The base class's initialisers, which make a hyperlink without target here.
          classMethod("initWithRangeValue:rangeFlavor:displayString:",
                      [](const Value& range, std::int64_t, const NSString& displayString) {
                        return makeRef<Self>(rangeArgument(range), nullptr, displayString);
                      }),
          classMethod(
              "initWithRangeValue:rangeFlavor:",
              [](const Value& range, std::int64_t) { return makeRef<Self>(rangeArgument(range)); }),
          classMethod("initWithRangeValue:",
                      [](const Value& range) { return makeRef<Self>(rangeArgument(range)); }),
          classMethod("initWithPlistDictionary:", &Self::initWithPlistDictionary),
          classMethod("initWithCoder:",
                      [](NSCoder* coder) { return initWithCoder(coderArgument(coder)); }),
          property("rangeURL", &Self::rangeURL),
      });
  return cls;
}

}  // namespace zeb
