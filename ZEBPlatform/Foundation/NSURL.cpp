#include <ZEBPlatform/Foundation/NSURL.h>
#include <ZEBPlatform/Foundation/detail/URLStorage.h>

#include <optional>
#include <utility>

namespace zeb {

NSURL NSURL::URLWithString(const NSString& text) {
  // Detached, because a URL often outlives the document that its text comes from.
  NSString own = text.detachedCopy();
  if (!own.isASCII() || own.empty()) return nullptr;
  const std::optional<detail::URLParts> parts = detail::parsedURL(own.asciiView());
  if (!parts) return nullptr;
  return NSURL(Value(adoptStorage, new detail::URLStorage(std::move(own), *parts)));
}

NSString NSURL::absoluteString() const {
  return isNil() ? NSString() : detail::storageOf(*this).text;
}

}  // namespace zeb
