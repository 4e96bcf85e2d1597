#pragma once

#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/NSURL.h>
#include <ZEBPlatform/Foundation/detail/URLParts.h>

#include <string_view>
#include <utility>

namespace zeb::detail {

struct URLStorage : Storage {
  URLStorage(NSString absolute, const URLParts& partsOfText) noexcept
      : Storage(ValueKind::URL, 0), text(std::move(absolute)), parts(partsOfText) {}

  const NSString text;  ///< stored as ASCII
  const URLParts parts;

  std::string_view view(URLPart URLParts::* part) const noexcept {
    return (parts.*part).in(text.asciiView());
  }
};

inline const URLStorage& storageOf(const NSURL& url) noexcept {
  return *url.storageAs<URLStorage>();
}

}  // namespace zeb::detail
