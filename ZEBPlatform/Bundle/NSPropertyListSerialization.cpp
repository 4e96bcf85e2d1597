#include <ZEBPlatform/Bundle/NSPropertyListSerialization.h>
#include <ZEBPlatform/Bundle/PropertyListReadersPrivate.h>
#include <ZEBPlatform/Foundation/NSDictionary.h>

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
    reading.fault = "it is larger than 16 MiB";
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
