// Uses the input as a URL, and as the content of each part of one. A URL that was accepted reads
// the same from its own text, and what was set to a part is read back. The conversions of URLs and
// hosts give well-formed text, and converting again changes nothing.

#include <ZEBPlatform/Foundation.h>
#include <ZEBPlatform/Url.h>
#include <ZEBUtilities/URLs.h>

#include <cstdint>
#include <cstdlib>
#include <string_view>

using namespace zeb;

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

void checkURL(const NSString& text) {
  const NSURL url = NSURL::URLWithString(text);
  if (url.isNil()) return;
  require(url.absoluteString() == text);
  const auto components = NSURLComponents::componentsWithURL(url, false);
  require(components->string() == text && components->URL() == url);
  require(scheme(url) == components->scheme() && user(url) == components->percentEncodedUser());
  require(port(url) == components->port() && query(url) == components->percentEncodedQuery());

  // Setting each part to what it is, decoded and encoded, changes nothing.
  const auto copy = components->copy();
  copy->setScheme(components->scheme());
  copy->setPort(port(url).isNil() ? NSNumber() : port(url));
  copy->setPercentEncodedUser(components->percentEncodedUser());
  copy->setPercentEncodedPassword(components->percentEncodedPassword());
  copy->setPercentEncodedHost(components->percentEncodedHost());
  copy->setPercentEncodedPath(components->percentEncodedPath());
  copy->setPercentEncodedQueryItems(components->percentEncodedQueryItems());
  copy->setPercentEncodedFragment(components->percentEncodedFragment());
  require(copy->percentEncodedQuery() == components->percentEncodedQuery());
  require(copy->host() == components->host() && copy->port() == components->port());
  copy->setPath(components->path());
  require(copy->path() == components->path());
  copy->setQueryItems(components->queryItems());
  require(copy->queryItems().count() == components->queryItems().count());
}

void checkParts(const NSString& text) {
  for (const ASCIICharacterSet& set : {ASCIICharacterSet(), ASCIICharacterSet("aé/"),
                                       ASCIICharacterSet::URLQueryAllowedCharacterSet()}) {
    const NSString encoded = stringByAddingPercentEncodingWithAllowedCharacters(text, set);
    require(encoded.isNil() != text.isWellFormed());
    require(encoded.isNil() || stringByRemovingPercentEncoding(encoded) == text);
  }
  const auto components = makeRef<NSURLComponents>();
  components->setScheme("s");
  components->setUser(text);
  components->setPassword(text);
  components->setHost(text);
  components->setPath(NSString("/") + text);
  components->setQueryItems({Value(NSURLQueryItem::queryItemWithName(text, text))});
  components->setFragment(text);
  const auto read = NSURLComponents::componentsWithURL(components->URL(), false);
  require(read && read->isEqual(*components));
  if (!text.isWellFormed()) return;
  require(read->user() == text && read->password() == text && read->host() == text);
  require(read->path() == NSString("/") + text && read->fragment() == text);
  require(read->queryItems()[0] == Value(NSURLQueryItem::queryItemWithName(text, text)));
}

void checkForms(const NSURL& url) {
  const NSString text = url.absoluteString();
  require(zeb_unparameterizedURLString(url) + zeb_parameterString(url) == text);
  require(zeb_hostIsSubDomainOfString(url, host(url)));
  require(!zeb_displayString(url) || zeb_displayString(url).isWellFormed());
  require(zeb_resourceString(url).isWellFormed());
  require(!zeb_schemelessString(url) ||
          zeb_absoluteString(url).hasSuffix(zeb_schemelessString(url)));

  const NSArray added{Value(NSURLQueryItem::queryItemWithName("é", "&"))};
  const NSString longer = zeb_URLByAppendingQueryItems(url, added).absoluteString();
  require(longer.length() > text.length() && longer.containsString("?%C3%A9=%26"));
  try {
    const NSURL updated = zeb_URLByAddingOrUpdatingQueryItems(url, added);
    require(zeb_URLByAddingOrUpdatingQueryItems(updated, added) == updated);
  } catch (const NSException&) {
    // An item without a value.
  }
}

void checkConversions(const NSString& text) {
  for (const bool toASCII : {true, false}) {
    const NSString url = ConvertUnicodeURLString(text, toASCII);
    require(url.isNil() || (url.isWellFormed() && !url.empty()));
    const NSString domain = ConvertUnicodeDomainString(text, toASCII);
    require(!text.isWellFormed() || domain.isWellFormed());
    require(ConvertUnicodeDomainString(domain, toASCII) == domain);
  }
  const auto [before, after] = _UnicodeURL_splitAfterString(text, "//");
  require(before + after == text);
  const auto [head, tail] = _UnicodeURL_splitBeforeCharactersInSet(text, ASCIICharacterSet("/?#"));
  require(head + tail == text);
  for (const NSURL& url : {zeb_URLWithString(text), zeb_URLWithDisplayString(text)}) {
    if (url.isNil()) continue;
    require(NSURL::URLWithString(url.absoluteString()) == url);
    checkForms(url);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Three-byte forms of surrogates become unpaired surrogates.
  const NSString text(std::string_view(reinterpret_cast<const char*>(data), size));
  checkURL(text);
  checkParts(text);
  checkConversions(text);
  return 0;
}
