#include <ZEBPlatform/Foundation/NSDictionary.h>
#include <ZEBPlatform/Foundation/detail/JoinedText.h>
#include <ZEBPlatform/Foundation/detail/URLStorage.h>
#include <ZEBPlatform/Url/NSString+PercentEncoding.h>
#include <ZEBPlatform/Url/NSURL+Components.h>
#include <ZEBPlatform/Url/NSURLComponents.h>
#include <ZEBPlatform/Url/NSURLQueryItem.h>
#include <ZEBUtilities/URLs/NSURL+UnicodeURL.h>
#include <ZEBUtilities/URLs/NSURL+ZEBAdditions.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace zeb {

namespace {

using detail::TextPiece;
using detail::URLParts;

template <class Unit>
constexpr char16_t lowered(Unit unit) noexcept {
  const auto wide = static_cast<char16_t>(unit);
  return wide >= 'A' && wide <= 'Z' ? static_cast<char16_t>(wide | 0x20) : wide;
}

constexpr auto isEqualIgnoringCase = [](auto left, auto right) {
  return lowered(left) == lowered(right);
};

/// "(null)" for nil.
TextPiece shownPiece(const NSString& text) noexcept {
  return text.isNil() ? TextPiece("(null)") : TextPiece(text);
}

std::string_view partOf(const NSURL& url, detail::URLPart URLParts::* part) noexcept {
  return detail::storageOf(url).view(part);
}

/// A part with the delimiter before it; nothing if the part is empty.
std::string_view withDelimiter(const NSURL& url, detail::URLPart URLParts::* part) noexcept {
  const std::string_view content = partOf(url, part);
  return content.empty() ? content : std::string_view(content.data() - 1, content.size() + 1);
}

/// How many units `zeb_parameterString` has.
std::size_t suffixLength(const NSURL& url) {
  const std::size_t parameters = parameterString(url).length();
  return (parameters == 0 ? 0 : parameters + 1) + withDelimiter(url, &URLParts::query).size() +
         withDelimiter(url, &URLParts::fragment).size();
}

/// Whether the host ends with the domain and has a label's start there.
template <class View>
bool endsWithLabels(std::string_view host, View domain) noexcept {
  if (domain.size() > host.size()) return false;
  const std::size_t start = host.size() - domain.size();
  return std::equal(domain.begin(), domain.end(), host.begin() + static_cast<std::ptrdiff_t>(start),
                    isEqualIgnoringCase) &&
         (start == 0 || host[start - 1] == '.');
}

Ref<NSURLQueryItem> encodedItem(const NSString& name, const NSString& value) {
  const auto scratch = makeRef<NSURLComponents>();
  scratch->setQueryItems({Value(NSURLQueryItem::queryItemWithName(name, value))});
  return scratch->percentEncodedQueryItems()[0].object<NSURLQueryItem>();
}

/// The one encoded form of a name. A name that cannot be decoded stays as it is written.
NSString normalizedName(const NSString& encodedName) {
  const NSString name = stringByRemovingPercentEncoding(encodedName);
  return name.isNil() ? encodedName : encodedItem(name, "")->name();
}

}  // namespace

NSURL zeb_URLWithString(const NSString& string) {
  const NSURL url = NSURL::URLWithString(string);
  return url.isNil() ? URLWithUnicodeString(string) : url;
}

NSURL zeb_URLWithDisplayString(const NSString& string) {
  if (string.empty()) return nullptr;
  constexpr std::string_view letters = "http";
  const NSString start = string.substringToIndex((std::min)(letters.size(), string.length()));
  const bool hasLetters = std::equal(letters.begin(), letters.end(), start.asciiView().begin(),
                                     start.asciiView().end(), isEqualIgnoringCase);
  return zeb_URLWithString(hasLetters ? string : detail::joinedText({"http://", string}));
}

NSString zeb_absoluteString(const NSURL& url) { return unicodeAbsoluteString(url); }

NSString zeb_schemelessString(const NSURL& url) {
  const NSString text = zeb_absoluteString(url);
  std::size_t start = scheme(url).length() + 1;
  if (text.length() <= start) return nullptr;
  while (start + 1 < text.length() && text.characterAtIndex(start) == '/') ++start;
  return text.substringFromIndex(start);
}

NSString zeb_displayString(const NSURL& url) {
  if (url.isNil()) return nullptr;
  const std::string_view scheme = partOf(url, &URLParts::scheme);
  if (scheme != "http" && scheme != "https") return unicodeAbsoluteString(url);
  const NSString host = unicodeHost(url);
  const NSString path = zeb::path(url);
  return detail::joinedText({shownPiece(host), path, withDelimiter(url, &URLParts::query),
                             withDelimiter(url, &URLParts::fragment)});
}

NSString zeb_resourceString(const NSURL& url) {
  if (url.isNil()) return nullptr;
  const NSString scheme = zeb::scheme(url);
  const NSString host = zeb::host(url);
  const NSString path = zeb::path(url);
  return detail::joinedText({shownPiece(scheme), "://", shownPiece(host), path});
}

NSString zeb_unparameterizedURLString(const NSURL& url) {
  if (url.isNil()) return nullptr;
  const NSString text = url.absoluteString();
  return text.substringToIndex(text.length() - suffixLength(url));
}

NSString zeb_parameterString(const NSURL& url) {
  if (url.isNil()) return nullptr;
  const std::size_t length = suffixLength(url);
  const NSString text = url.absoluteString();
  return length == 0 ? NSString() : text.substringFromIndex(text.length() - length);
}

bool zeb_hostIsSubDomainOfString(const NSURL& url, const NSString& string) {
  if (url.isNil()) return false;
  if (string.isNil()) return true;
  const NSString host = zeb::host(url);
  if (host.isNil()) return false;
  return string.isASCII() ? endsWithLabels(host.asciiView(), string.asciiView())
                          : endsWithLabels(host.asciiView(), string.utf16View());
}

NSURL zeb_URLByAppendingQueryItems(const NSURL& url, const NSArray& items) {
  if (url.isNil() || items.empty()) return url;
  const auto components = NSURLComponents::componentsWithURL(url, false);
  const auto added = makeRef<NSURLComponents>();
  added->setQueryItems(items);
  NSMutableArray all(added->percentEncodedQueryItems());
  if (all.empty()) return url;
  all.addObjectsFromArray(components->percentEncodedQueryItems());
  components->setPercentEncodedQueryItems(all);
  return components->URL();
}

NSURL zeb_URLByAddingOrUpdatingQueryItems(const NSURL& url, const NSArray& items) {
  if (url.isNil() || items.empty()) return url;
  const auto components = NSURLComponents::componentsWithURL(url, false);
  // Names and values percent-encoded.
  NSMutableDictionary values;
  if (const NSArray existing = components->percentEncodedQueryItems()) {
    for (const Value& element : existing) {
      const auto item = element.object<NSURLQueryItem>();
      values.setObject(item->value(), normalizedName(item->name()));
    }
  }
  for (const Value& element : items) {
    const auto item = element.object<NSURLQueryItem>();
    if (!item || item->name().isNil() || item->value().isNil()) continue;
    const auto encoded = encodedItem(item->name(), item->value());
    values.setObject(encoded->value(), encoded->name());
  }
  NSMutableArray all;
  for (const auto& [name, value] : values) {
    all.addObject(NSURLQueryItem::queryItemWithName(NSString(name), NSString(value)));
  }
  components->setPercentEncodedQueryItems(all);
  return components->URL();
}

bool zeb_hasHTTPScheme(const NSURL& url) {
  if (url.isNil()) return false;
  const std::string_view scheme = partOf(url, &URLParts::scheme);
  return std::ranges::any_of(std::initializer_list<std::string_view>{"http", "https"},
                             [&](std::string_view name) {
                               return std::equal(name.begin(), name.end(), scheme.begin(),
                                                 scheme.end(), isEqualIgnoringCase);
                             });
}

}  // namespace zeb
