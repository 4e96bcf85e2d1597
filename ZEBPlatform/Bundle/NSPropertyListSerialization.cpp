#include <ZEBPlatform/Bundle/NSPropertyListSerialization.h>
#include <ZEBPlatform/Bundle/PropertyListReadersPrivate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>

#include <string>
#include <utility>

namespace zeb {

Value NSPropertyListSerialization::propertyListWithData(const NSData& data, std::uint64_t options,
                                                        NSPropertyListFormat* format,
                                                        NSError* error) {
  const std::string_view document = data.view();
  const bool keepsMutable = options & NSPropertyListMutableContainers;
  const bool isBinary = document.starts_with("bplist00");
  detail::PropertyListReading reading;
  if (document.size() > NSPropertyListMaximumSize) {
    static_assert(NSPropertyListMaximumSize % (1 << 20) == 0);
    reading.fault = "it is larger than " + std::to_string(NSPropertyListMaximumSize >> 20) + " MiB";
  } else if (isBinary) {
    reading = detail::readBinaryPropertyList(document, keepsMutable);
  } else {
    reading = detail::readXMLPropertyList(document, keepsMutable);
  }
  if (!reading.value.isNil()) {
    if (format) *format = isBinary ? NSPropertyListBinaryFormat_v1_0 : NSPropertyListXMLFormat_v1_0;
  } else if (error) {
    *error = NSError(NSCocoaErrorDomain, NSPropertyListReadCorruptError,
                     {{NSString(NSLocalizedDescriptionKey),
                       NSString::stringWithFormat("The property list can't be read: %s.",
                                                  reading.fault.c_str())}});
  }
  return std::move(reading.value);
}

}  // namespace zeb
