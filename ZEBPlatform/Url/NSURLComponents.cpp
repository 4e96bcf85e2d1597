#include <ZEBPlatform/Foundation/KeyedHash.h>
#include <ZEBPlatform/Foundation/NSException.h>
#include <ZEBPlatform/Foundation/detail/JoinedText.h>
#include <ZEBPlatform/Foundation/detail/URLStorage.h>
#include <ZEBPlatform/Url/NSURLComponents.h>
#include <ZEBPlatform/Url/NSURLQueryItem.h>
#include <ZEBPlatform/Url/PercentEncodingPrivate.h>

#include <string_view>
#include <vector>

namespace zeb {

namespace {

using Set = ASCIICharacterSet;

constexpr Set valueCharacters = Set::URLQueryAllowedCharacterSet() - Set("&");
constexpr Set nameCharacters = valueCharacters - Set("=");
/// Of decoded items.
constexpr Set itemCharacters = nameCharacters - Set("+;");

void requireValid(bool isValid, const char* part, const Value& text) {
  if (!isValid)
    raiseInvalidArgument(NSString::stringWithFormat("%s of a URL cannot be \"%@\"", part, text));
}

/// Sets a part to encoded text, or to nil.
void setEncoded(NSString& part, const char* name, const NSString& text, const Set& allowed) {
  const NSString own = text.copy();
  requireValid(own.isNil() || detail::isPercentEncoded(own, allowed), name, own);
  part = own;
}

bool isEncodedHost(const NSString& host) noexcept {
  return detail::isIPLiteral(host.asciiView()) ||
         detail::isPercentEncoded(host, Set::URLHostAllowedCharacterSet());
}

NSString orEmpty(const NSString& text) { return text.isNil() ? NSString("") : text; }

/// Joins the items' encoded names and values.
NSString queryOf(const NSArray& items, NSString (*encode)(const NSString&, const Set&)) {
  if (items.isNil()) return nullptr;
  std::string query;
  bool isFirst = true;
  for (const Value& element : items) {
    const auto item = element.object<NSURLQueryItem>();
    if (!item) continue;
    if (!isFirst) query += '&';
    isFirst = false;
    query += orEmpty(encode(item->name(), nameCharacters)).asciiView();
    if (item->value().isNil()) continue;
    query += '=';
    query += encode(item->value(), valueCharacters).asciiView();
  }
  return query;
}

}  // namespace

Ref<NSURLComponents> NSURLComponents::componentsWithString(const NSString& string) {
  return componentsWithURL(NSURL::URLWithString(string), false);
}

Ref<NSURLComponents> NSURLComponents::componentsWithURL(const NSURL& url, bool) {
  if (url.isNil()) return nullptr;
  const detail::URLStorage& storage = detail::storageOf(url);
  const auto part = [&](detail::URLPart detail::URLParts::* place) {
    return (storage.parts.*place).exists() ? NSString(storage.view(place)) : NSString();
  };
  auto components = makeRef<NSURLComponents>();
  using Parts = detail::URLParts;
  components->parts_ = {part(&Parts::scheme), part(&Parts::user),    part(&Parts::password),
                        part(&Parts::host),   part(&Parts::port),    part(&Parts::path),
                        part(&Parts::query),  part(&Parts::fragment)};
  return components;
}

void NSURLComponents::setScheme(const NSString& scheme) {
  const NSString own = scheme.copy();
  requireValid(own.isNil() || detail::isURLScheme(own.asciiView()), "The scheme", own);
  parts_.scheme = own;
}

NSNumber NSURLComponents::port() const {
  const auto number = detail::portNumber(parts_.port.asciiView());
  return number ? NSNumber(*number) : NSNumber();
}

void NSURLComponents::setPort(const NSNumber& port) {
  const NSString digits = port.isNil() ? NSString() : port.stringValue();
  requireValid(port.isNil() || (!port.isBoolean() && detail::portNumber(digits.asciiView())),
               "The port", port);
  parts_.port = digits;
}

NSString NSURLComponents::user() const { return detail::percentDecodedOrSame(parts_.user); }
NSString NSURLComponents::password() const { return detail::percentDecodedOrSame(parts_.password); }
NSString NSURLComponents::host() const { return detail::percentDecodedOrSame(parts_.host); }
NSString NSURLComponents::path() const { return detail::percentDecodedOrSame(parts_.path); }
NSString NSURLComponents::query() const { return detail::percentDecodedOrSame(parts_.query); }
NSString NSURLComponents::fragment() const { return detail::percentDecodedOrSame(parts_.fragment); }

void NSURLComponents::setUser(const NSString& user) {
  parts_.user = detail::percentEncoded(user, Set::URLUserAllowedCharacterSet());
}
void NSURLComponents::setPassword(const NSString& password) {
  parts_.password = detail::percentEncoded(password, Set::URLPasswordAllowedCharacterSet());
}
void NSURLComponents::setHost(const NSString& host) {
  parts_.host = detail::isIPLiteral(host.asciiView())
                    ? host.copy()
                    : detail::percentEncoded(host, Set::URLHostAllowedCharacterSet());
}
void NSURLComponents::setPath(const NSString& path) {
  parts_.path = orEmpty(detail::percentEncoded(path, Set::URLPathAllowedCharacterSet()));
}
void NSURLComponents::setQuery(const NSString& query) {
  parts_.query = detail::percentEncoded(query, Set::URLQueryAllowedCharacterSet());
}
void NSURLComponents::setFragment(const NSString& fragment) {
  parts_.fragment = detail::percentEncoded(fragment, Set::URLFragmentAllowedCharacterSet());
}

void NSURLComponents::setPercentEncodedUser(const NSString& user) {
  setEncoded(parts_.user, "The user", user, Set::URLUserAllowedCharacterSet());
}
void NSURLComponents::setPercentEncodedPassword(const NSString& password) {
  setEncoded(parts_.password, "The password", password, Set::URLPasswordAllowedCharacterSet());
}
void NSURLComponents::setPercentEncodedHost(const NSString& host) {
  const NSString own = host.copy();
  requireValid(own.isNil() || isEncodedHost(own), "The host", own);
  parts_.host = own;
}
void NSURLComponents::setPercentEncodedPath(const NSString& path) {
  setEncoded(parts_.path, "The path", orEmpty(path), Set::URLPathAllowedCharacterSet());
}
void NSURLComponents::setPercentEncodedQuery(const NSString& query) {
  setEncoded(parts_.query, "The query", query, Set::URLQueryAllowedCharacterSet());
}
void NSURLComponents::setPercentEncodedFragment(const NSString& fragment) {
  setEncoded(parts_.fragment, "The fragment", fragment, Set::URLFragmentAllowedCharacterSet());
}

NSArray NSURLComponents::percentEncodedQueryItems() const {
  if (parts_.query.isNil()) return nullptr;
  std::vector<Value> items;
  std::string_view rest = parts_.query.asciiView();
  for (bool isLast = rest.empty(); !isLast;) {
    const std::size_t end = rest.find('&');
    isLast = end == std::string_view::npos;
    const std::string_view item = rest.substr(0, end);
    const std::size_t equals = item.find('=');
    const bool hasValue = equals != std::string_view::npos;
    items.emplace_back(makeRef<NSURLQueryItem>(
        item.substr(0, equals), hasValue ? NSString(item.substr(equals + 1)) : NSString()));
    if (!isLast) rest.remove_prefix(end + 1);
  }
  return NSArray::arrayWithObjects(items);
}

NSArray NSURLComponents::queryItems() const {
  if (parts_.query.isNil()) return nullptr;
  std::vector<Value> items;
  for (const Value& element : percentEncodedQueryItems()) {
    const auto item = element.object<NSURLQueryItem>();
    items.emplace_back(makeRef<NSURLQueryItem>(detail::percentDecodedOrSame(item->name()),
                                               detail::percentDecodedOrSame(item->value())));
  }
  return NSArray::arrayWithObjects(items);
}

void NSURLComponents::setQueryItems(const NSArray& items) {
  parts_.query = queryOf(items, [](const NSString& text, const Set&) {
    return detail::percentEncoded(text, itemCharacters);
  });
}

void NSURLComponents::setPercentEncodedQueryItems(const NSArray& items) {
  parts_.query = queryOf(items, [](const NSString& text, const Set& allowed) {
    requireValid(text.isNil() || detail::isPercentEncoded(text, allowed),
                 "A name or value in the query", text);
    return text;
  });
}

NSString NSURLComponents::string() const {
  const auto& [scheme, user, password, host, port, path, query, fragment] = parts_;
  const std::string_view pathText = path.asciiView();
  if (parts_.hasAuthority()) {
    if (!pathText.empty() && pathText[0] != '/') return nullptr;
  } else {
    if (pathText.starts_with("//")) return nullptr;
    const std::string_view firstSegment = pathText.substr(0, pathText.find('/'));
    if (!scheme && firstSegment.find(':') != std::string_view::npos) return nullptr;
  }
  const auto when = [](bool exists, const char* delimiter) { return exists ? delimiter : ""; };
  return detail::joinedText({scheme, when(!scheme.isNil(), ":"), when(parts_.hasAuthority(), "//"),
                             user, when(!password.isNil(), ":"), password,
                             when(user || password, "@"), host, when(!port.isNil(), ":"), port,
                             path, when(!query.isNil(), "?"), query, when(!fragment.isNil(), "#"),
                             fragment});
}

Ref<NSURLComponents> NSURLComponents::copy() const {
  auto copied = makeRef<NSURLComponents>();
  copied->parts_ = parts_;
  return copied;
}

bool NSURLComponents::isEqual(const NSObject& other) const {
  const auto* components = dynamic_cast<const NSURLComponents*>(&other);
  return components && components->parts_ == parts_;
}

std::size_t NSURLComponents::hash() const noexcept {
  detail::KeyedHasher hasher;
  for (const NSString* part : {&parts_.scheme, &parts_.user, &parts_.password, &parts_.host,
                               &parts_.port, &parts_.path, &parts_.query, &parts_.fragment}) {
    hasher.absorb(detail::keyedHashOf(*part));
  }
  return hasher.finish();
}

}  // namespace zeb
