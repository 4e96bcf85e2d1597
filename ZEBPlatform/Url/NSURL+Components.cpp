#include <ZEBPlatform/Foundation/detail/URLStorage.h>
#include <ZEBPlatform/Url/NSURL+Components.h>
#include <ZEBPlatform/Url/PercentEncodingPrivate.h>

#include <cstdint>
#include <string_view>

namespace zeb {

namespace {

NSString partOf(const NSURL& url, detail::URLPart detail::URLParts::* part) {
  if (url.isNil()) return nullptr;
  const detail::URLStorage& storage = detail::storageOf(url);
  return (storage.parts.*part).exists() ? NSString(storage.view(part)) : NSString();
}

/// The path as written, divided at its parameter string's ";".
struct DividedPath {
  std::string_view path;
  std::string_view parameters;  ///< with the ";"; empty if there are none
};
DividedPath dividedPath(const NSURL& url) noexcept {
  const std::string_view path = detail::storageOf(url).view(&detail::URLParts::path);
  const std::size_t lastSlash = path.rfind('/');
  const std::size_t segment = lastSlash == std::string_view::npos ? 0 : lastSlash + 1;
  const std::size_t semicolon = path.find(';', segment);
  if (semicolon == std::string_view::npos) return {path, {}};
  return {path.substr(0, semicolon), path.substr(semicolon)};
}

}  // namespace

NSString scheme(const NSURL& url) { return partOf(url, &detail::URLParts::scheme); }

NSString resourceSpecifier(const NSURL& url) {
  const NSString text = url.absoluteString();
  const std::size_t schemeLength = scheme(url).length();
  return schemeLength == 0 ? text : text.substringFromIndex(schemeLength + 1);
}

NSString user(const NSURL& url) { return partOf(url, &detail::URLParts::user); }

NSString password(const NSURL& url) { return partOf(url, &detail::URLParts::password); }

NSString host(const NSURL& url) {
  if (url.isNil()) return nullptr;
  std::string_view host = detail::storageOf(url).view(&detail::URLParts::host);
  if (host.empty()) return nullptr;
  if (host.front() == '[') host = host.substr(1, host.size() - 2);
  return host;
}

NSNumber port(const NSURL& url) {
  if (url.isNil()) return nullptr;
  const auto number = detail::portNumber(detail::storageOf(url).view(&detail::URLParts::port));
  return number ? NSNumber(*number) : NSNumber();
}

NSString path(const NSURL& url) {
  if (url.isNil()) return nullptr;
  std::string_view path = dividedPath(url).path;
  while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
  const bool hasEscapes = path.find('%') != std::string_view::npos;
  return hasEscapes ? detail::percentDecodedOrSame(path) : NSString(path);
}

NSString parameterString(const NSURL& url) {
  if (url.isNil()) return nullptr;
  const std::string_view parameters = dividedPath(url).parameters;
  return parameters.empty() ? NSString() : NSString(parameters.substr(1));
}

NSString query(const NSURL& url) { return partOf(url, &detail::URLParts::query); }

NSString fragment(const NSURL& url) { return partOf(url, &detail::URLParts::fragment); }

}  // namespace zeb
