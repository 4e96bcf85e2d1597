#include <ZEBPlatform/Foundation/NSURL.h>
#include <ZEBPlatform/Foundation/detail/URLStorage.h>

#include <optional>
#include <utility>

namespace zeb {

NSURL NSURL::URLWithString(const NSString& text) {
  if (text.empty()) return nullptr;
  // Detached, because a URL often outlives the document that its text comes from.
  const bool isOwn = !(text.text().flags & (detail::StorageMutable | detail::StorageInArena));
  NSString own = isOwn ? text : text.detachedCopy();
  if (!own.isASCII()) return nullptr;
  const std::optional<detail::URLParts> parts = detail::parsedURL(own.asciiView());
  if (!parts) return nullptr;
  NSURL url;
  // Moved in, because converting the value would count a reference up and down again.
  static_cast<Value&>(url) = Value(adoptStorage, new detail::URLStorage(std::move(own), *parts));
  return url;
}

NSString NSURL::absoluteString() const {
  return isNil() ? NSString() : detail::storageOf(*this).text;
}

}  // namespace zeb
