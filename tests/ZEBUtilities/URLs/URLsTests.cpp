#include <ZEBPlatform/Foundation.h>
#include <ZEBPlatform/Url.h>
#include <ZEBUtilities/URLs.h>

#include <numeric>
#include <set>
#include <string>
#include <tuple>
#include <utility>

#include "Support/Support.h"

namespace zeb::test {

std::string shown(const NSString& text) { return text.isNil() ? "-" : text.utf8(); }
NSURL urlOf(const NSString& text) { return NSURL::URLWithString(text); }
Value item(const NSString& name, const NSString& value) {
  return NSURLQueryItem::queryItemWithName(name, value);
}

const NSString loneSurrogate(std::u16string_view(u"a\xDC00"));

TEST(UnicodeURLs, AreConvertedBothWays) {
  // A text, its form in ASCII, and the Unicode form of that.
  // clang-format off
  const std::tuple<NSString, std::string, std::string> cases[] = {
      {"http://ü:p@bücher.example:8080/a b%2Fé?q[]=%c3%a9#x#y",
       "http://ü:p@xn--bcher-kva.example:8080/a%20b/%C3%A9?q[]=%C3%A9#x#y",
       "http://ü:p@bücher.example:8080/a%20b/%C3%A9?q[]=%C3%A9#x#y"},
      {"//例え。テスト．jp｡", "//xn--r8jz45g.xn--zckzah.jp.", "//例え.テスト.jp."},
      {"bücher.example", "xn--bcher-kva.example", "bücher.example"},
      {"mailto:é@bücher.example?a=é", "mailto:é@xn--bcher-kva.example?a=%C3%A9",
       "mailto:é@bücher.example?a=%C3%A9"},
      {"http://a_b.bücher.example/", "http://a_b.bücher.example/", "http://.bücher.example/"},
      {"http://[::1]:8/x", "http://[::1]:8/x", "http://::1]:8/x"},
      {"http://XN--BCHER-KVA.example/%zz", "http://XN--BCHER-KVA.example/%25zz",
       "http://.example/%25zz"},
      {"tel:+1", "tel:+1", "tel:"}, {"a:b/c//bücher", "a:b/c//xn--bcher-kva", "a:b/c//bücher"},
      {"http://\u2100.example/", "http://\u2100.example/", "http://.example/"},
      {"", "-", "-"}, {"_", "_", "-"}, {"a/" + loneSurrogate, "-", "-"}, {nullptr, "-", "-"},
      {loneSurrogate + "@b", "-", "-"}, {"//" + loneSurrogate, "-", "-"}};
  // clang-format on
  for (const auto& [text, inASCII, inUnicode] : cases) {
    const NSString ascii = ConvertUnicodeURLString(text, true);
    EXPECT_EQ(shown(ascii), inASCII);
    EXPECT_EQ(shown(ConvertUnicodeURLString(ascii, false)), inUnicode);
  }
}

TEST(UnicodeDomains, StayAsTheyAreIfTheyCannotBeConverted) {
  const std::string label(63, 'a'), tooLong = std::string(1020, '.') + "bücher", stops(1025, '.');
  // clang-format off
  const std::tuple<NSString, std::string, std::string> cases[] = {
      {"bücher.例え", "xn--bcher-kva.xn--r8jz45g", "bücher.例え"},
      {"xn--bcher-kva.A..b.", "xn--bcher-kva.A..b.", "bücher.A..b."},
      {label + "." + label + "a.-a.a-.a", label + "." + label + "a.-a.a-.a", label + "....a"},
      {"Xn--a.b", "Xn--a.b", ".b"}, {"", "", ""}, {tooLong, tooLong, tooLong}, {nullptr, "-", "-"},
      {stops, stops, stops}};
  // clang-format on
  for (const auto& [text, inASCII, inUnicode] : cases) {
    EXPECT_EQ(shown(ConvertUnicodeDomainString(text, true)), inASCII);
    EXPECT_EQ(shown(decodeUnicodeDomainString(text)), inUnicode);
  }
  NSMutableString wide{NSString("é")};
  wide.setString("a_b.xn--bcher-kva");
  EXPECT_EQ(decodeUnicodeDomainString(wide), ".bücher");
}

TEST(UnicodeURLs, AreDivided) {
  using Parts = std::pair<NSString, NSString>;
  EXPECT_EQ(_UnicodeURL_splitAfterString("é://b://", "://"), Parts("é://", "b://"));
  for (const NSString& separator : {NSString("c"), NSString(""), NSString()})
    EXPECT_EQ(_UnicodeURL_splitAfterString("ab", separator), Parts("", "ab"));
  const ASCIICharacterSet ends("/?#");
  EXPECT_EQ(_UnicodeURL_splitBeforeCharactersInSet("é#", ends), Parts("é", "#"));
  EXPECT_EQ(_UnicodeURL_splitBeforeCharactersInSet("ab", ends), Parts("ab", ""));
  EXPECT_EQ(_UnicodeURL_splitBeforeCharactersInSet(nullptr, ends), Parts());
  const auto isValid = _UnicodeURL_isValidCharacterSequence;
  EXPECT_TRUE(isValid("") && isValid("é😀") && !isValid(loneSurrogate) && !isValid(nullptr));
  EXPECT_FALSE(isValid(std::u16string_view(u"\xD83D\xD83D\xDE00")));
}

TEST(URLs, AreMadeOfWhatPeopleAndServersWrite) {
  // A text, and the URLs that are made of it as from a server and as typed.
  // clang-format off
  const std::tuple<NSString, std::string, std::string> cases[] = {
      {"bücher.example/é", "xn--bcher-kva.example/%C3%A9", "http://xn--bcher-kva.example/%C3%A9"},
      {"HTTPS://a", "HTTPS://a", "HTTPS://a"}, {"h", "h", "http://h"},
      {"httpd.example", "httpd.example", "httpd.example"},
      {"a.example:80/b", "a.example:80/b", "http://a.example:80/b"},
      {"http://h/a b", "http://h/a%20b", "http://h/a%20b"}, {"http://a/[b]", "-", "-"},
      {"http://user@evil.example@good.example/é", "-", "-"}, {"http://a\\b/", "-", "-"},
      {"http://evil.example\uFF0F.good.example/", "-", "-"}, {"http://[é]/", "-", "-"},
      {loneSurrogate, "-", "-"}, {"", "-", "-"}, {nullptr, "-", "-"}};
  // clang-format on
  for (const auto& [text, sent, typed] : cases) {
    EXPECT_EQ(shown(zeb_URLWithString(text).absoluteString()), sent);
    EXPECT_EQ(shown(zeb_URLWithDisplayString(text).absoluteString()), typed);
  }
  EXPECT_EQ(unicodeHost(zeb_URLWithString("http://é.例え:1/")), "é.例え");
  EXPECT_TRUE(!URLWithUnicodeString("") && !initWithUnicodeString("") &&
              !unicodeHost(urlOf("file:///a")) && !unicodeHost(nullptr));
}

TEST(URLs, HaveFormsForPeople) {
  // Without scheme, for display, the resource, without parameters, the parameters.
  // clang-format off
  const std::pair<const char*, const char*> cases[] = {
      {"https://u@xn--bcher-kva.example:1/%C3%A9/;p?q=1#f",
       "u@bücher.example:1/%C3%A9/;p?q=1#f bücher.example/é?q=1#f https://xn--bcher-kva.example/é "
       "https://u@xn--bcher-kva.example:1/%C3%A9/ ;p?q=1#f"},
      {"http://a/b", "a/b a/b http://a/b http://a/b -"},
      {"http:", "- (null) http://(null) http: -"}, {"_", "- - (null)://(null)_ _ -"},
      {"http:////a", "a (null)//a http://(null)//a http:////a -"},
      {"http:///", "/ (null)/ http://(null)/ http:/// -"},
      {"HTTP://a/?q", "a/?q HTTP://a/?q HTTP://a/ HTTP://a/ ?q"},
      {"mailto:a@b", "a@b mailto:a@b mailto://(null)a@b mailto:a@b -"},
      {"/a;b?#c", "a;b?#c /a;b?#c (null)://(null)/a /a; b?#c"},
      {"http://a/;?#", "a/;?# a/ http://a/ http://a/;?# -"}};
  // clang-format on
  for (const auto& [text, forms] : cases) {
    const NSURL url = urlOf(text);
    std::string found;
    for (const NSString& form :
         {zeb_schemelessString(url), zeb_displayString(url), zeb_resourceString(url),
          zeb_unparameterizedURLString(url), zeb_parameterString(url)}) {
      found += (found.empty() ? "" : " ") + shown(form);
    }
    EXPECT_EQ(found, forms);
    EXPECT_EQ(zeb_unparameterizedURLString(url) + zeb_parameterString(url), NSString(text));
  }
  for (const auto form : {zeb_schemelessString, zeb_displayString, zeb_resourceString,
                          zeb_unparameterizedURLString, zeb_parameterString, zeb_absoluteString})
    EXPECT_TRUE(form(nullptr).isNil());
  const auto hasHTTP = [](const char* text) { return zeb_hasHTTPScheme(urlOf(text)); };
  EXPECT_TRUE(hasHTTP("http:") && hasHTTP("HtTpS://a"));
  EXPECT_FALSE(hasHTTP("httpx:") || hasHTTP("//http") || hasHTTP(nullptr));
}

TEST(URLs, KnowTheirDomains) {
  const NSURL url = urlOf("http://m.example.com/");
  for (const char* domain : {"EXAMPLE.com", "m.example.COM", "com"})
    EXPECT_TRUE(zeb_hostIsSubDomainOfString(url, domain)) << domain;
  for (const char* domain :
       {"xample.com", "", ".com", "com.", "a.m.example.com", "example.net", "example.\uFF43om"})
    EXPECT_FALSE(zeb_hostIsSubDomainOfString(url, domain)) << domain;
  EXPECT_TRUE(zeb_hostIsSubDomainOfString(urlOf("//a.b."), "B.") &&
              zeb_hostIsSubDomainOfString(urlOf("//a.b."), "") &&
              zeb_hostIsSubDomainOfString(urlOf("/path"), nullptr));
  EXPECT_FALSE(zeb_hostIsSubDomainOfString(urlOf("http://badexample.com"), "example.com") ||
               zeb_hostIsSubDomainOfString(urlOf("/path"), "path") ||
               zeb_hostIsSubDomainOfString(nullptr, nullptr));
}

TEST(URLs, ChangeTheirQueries) {
  const auto appended = [](const char* text, const NSArray& items) {
    return shown(zeb_URLByAppendingQueryItems(urlOf(text), items).absoluteString());
  };
  EXPECT_EQ(appended("http://a?a=1#f", {item("b", "2")}), "http://a?b=2&a=1#f");
  EXPECT_EQ(appended("/?", {Value("b"), item("é&", "+= "), item("c", nullptr)}),
            "/?%C3%A9%26=%2B%3D%20&c");
  EXPECT_EQ(appended("/?x%2f=%FF&&", {item("b", "")}), "/?b=&x%2f=%FF&&");
  EXPECT_EQ(appended("/?a", NSArray::array()), "/?a");
  EXPECT_EQ(appended("http://h/", {Value("no item")}), "http://h/");

  const auto updated = [](const char* text, const NSArray& items) {
    const NSURL url = zeb_URLByAddingOrUpdatingQueryItems(urlOf(text), items);
    std::set<std::string> found;
    for (const Value& each : NSURLComponents::componentsWithURL(url, false)->queryItems())
      found.insert(each.description().utf8() + ";");
    return std::accumulate(found.begin(), found.end(), std::string());
  };
  EXPECT_EQ(updated("/?a=1", {item("a", "2")}), "a=2;");
  EXPECT_EQ(updated("/?b=0&%61=1&a=2", {item("c", "é")}), "a=2;b=0;c=é;");
  EXPECT_EQ(updated("/?%FF=%FE&+=3", {item("%FF", "x"), item("+", "4"), item("+", "5")}),
            "%FF=%FE;%FF=x;+=5;");
  EXPECT_EQ(updated("/", {item("a", nullptr), item(nullptr, "b"), Value(1)}), "");
  EXPECT_EQ(raisedName([&] { updated("/?a=1&b", {item("c", "1")}); }), NSInvalidArgumentException);
  const NSArray items{item("a", "b")};
  EXPECT_TRUE(!zeb_URLByAppendingQueryItems(nullptr, items) &&
              !zeb_URLByAddingOrUpdatingQueryItems(nullptr, items));
}

TEST(URLs, SurviveLongAndHostileTexts) {
  for (const std::string piece :
       {"a", "&", "a=b&", "%41", "%", "/", ".", "é.", "@", ":", "\\", "\x01"}) {
    std::string many;
    while (many.size() < 300'000) many += piece;
    for (const std::string start : {"http://", "http://h/?"}) {
      const NSString text(start + many);
      const NSURL url = zeb_URLWithString(text);
      // What was accepted is shown, and is accepted again from its own text.
      EXPECT_EQ(urlOf(url.absoluteString()), url) << start << piece;
      EXPECT_EQ(zeb_displayString(url).isNil(), url.isNil()) << start << piece;
      const NSURL longer = zeb_URLByAppendingQueryItems(url, {item("q", "1")});
      EXPECT_EQ(longer.isNil(), url.isNil()) << start << piece;
    }
  }
}

}  // namespace zeb::test
