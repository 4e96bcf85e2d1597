#include <ZEBPlatform/Foundation.h>
#include <ZEBPlatform/Url.h>

#include <sstream>
#include <string>
#include <utility>

#include "Support/Support.h"

// The fuzz target url, whose inputs the tests replay, checks what must hold of every URL.
namespace zeb::test {

using Set = ASCIICharacterSet;

std::string shown(const Value& value) { return value ? value.description().utf8() : "-"; }

/// Scheme, user, password, host, port, path, parameter string, query and fragment; "-" for nil.
std::string partsOf(const NSURL& url) {
  std::string parts;
  for (const Value& part : {Value(scheme(url)), Value(user(url)), Value(password(url)),
                            Value(host(url)), Value(port(url)), Value(path(url)),
                            Value(parameterString(url)), Value(query(url)), Value(fragment(url))}) {
    parts += (parts.empty() ? "" : " ") + shown(part);
  }
  return parts;
}

const NSString loneSurrogate(std::u16string_view(u"a\xD800"));

TEST(NSURL, IsTakenApart) {
  // clang-format off
  const std::pair<const char*, const char*> cases[] = {
      {"http://u:p:w@Host.example:080/a/b;c;d?x=1&y?#z?/",
       "http u p:w Host.example 80 /a/b c;d x=1&y? z?/"},
      {"HTTP+x.1-:", "HTTP+x.1- - - - -  - - -"}, {"s://@:/", "s  - - - / - - -"},
      {"s://%41:%42@%2e%3A:65535?#", "s %41 %42 %2e%3A 65535  -  "}, {"//:@h", "-   h -  - - -"},
      {"s://h:65536", "s - - h -  - - -"}, {"s://h:99999999999999999999", "s - - h -  - - -"},
      {"file:///tmp///", "file - - - - /tmp - - -"}, {"http://h//", "http - - h - / - - -"},
      {"x/%C3%A9%2F;;p/;q/", "- - - - - x/é/;;p/;q - - -"}, {"/%FF;%FF", "- - - - - /%FF %FF - -"},
      {"mailto:a@b:c;d?e", "mailto - - - - a@b:c d e -"}, {"./a:b", "- - - - - ./a:b - - -"},
      {"?q", "- - - - -  - q -"}, {"#", "- - - - -  - - "},
      {"http://[::1]:8/", "http - - ::1 8 / - - -"},
      {"http://u@[v1F.a:b]", "http u - v1F.a:b -  - - -"},
      {"http://good.example@evil.example/", "http good.example - evil.example - / - - -"},
      {"http://[1:2:3:4:5:6:7::]", "http - - 1:2:3:4:5:6:7:: -  - - -"},
      {"http://[::ffff:1.20.255.0]", "http - - ::ffff:1.20.255.0 -  - - -"},
      {"http://[1:2:3:4:5:6:7:abCD]", "http - - 1:2:3:4:5:6:7:abCD -  - - -"}};
  // clang-format on
  for (const auto& [text, parts] : cases) {
    const NSURL url = NSURL::URLWithString(text);
    EXPECT_EQ(partsOf(url), parts) << text;
    const auto components = NSURLComponents::componentsWithURL(url, false);
    EXPECT_EQ(shown(components ? components->string() : NSString()), text);
  }
  EXPECT_TRUE(partsOf(nullptr) == "- - - - - - - - -" && !resourceSpecifier(nullptr) &&
              resourceSpecifier(NSURL::URLWithString("a://b/c?d")) == "//b/c?d" &&
              resourceSpecifier(NSURL::URLWithString("/a:b")) == "/a:b");
}

TEST(NSURL, RefusesWhatTheGrammarDoesNotHave) {
  std::istringstream refused(
      "1a:b :b a_b:c %61:b http://h:x/ http://h:80:80/ http://h:-1 http://a@b@c/ "
      "http://h\\@evil/ http://h%2/ /% /%4 /%4g /%g4 /a[b] /?[ /## "
      "http://h\u2044x/ http://h\uFF0F http://[] http://[::1 http://::1] http://[::1]x "
      "http://[::1]] http://a[::1] http://[1:2:3:4:5:6:7] http://[1:2:3:4:5:6:7:8:9] "
      "http://[1:2:3:4:5:6:7:8::] http://[1::2::3] http://[:1:2:3:4:5:6:7:8] http://[12345::] "
      "http://[1:2:3:4:5:6:7:] http://[:::] http://[::1.2.3] http://[::1.2.3.256] "
      "http://[::01.2.3.4] http://[::1.2.3.4:5] http://[::1.2.3.4.] http://[1.2.3.4] "
      "http://[1:2:3:4:5:6:7:1.2.3.4] http://[fe80::1%25en0] http://[v.a] http://[v1.] "
      "http://[vg.a] http://[v1.[]");
  for (std::string text; refused >> text;) EXPECT_TRUE(NSURL::URLWithString(text).isNil()) << text;
  EXPECT_TRUE(NSURL::URLWithString(std::string_view("a\0b", 3)).isNil());
  EXPECT_TRUE(!NSURL::URLWithString("http://" + std::string(1 << 20, '@')) &&
              !NSURL::URLWithString(std::string(1 << 20, ':')) &&
              !NSURL::URLWithString("http://[" + std::string(1 << 20, ':') + "]/") &&
              NSURL::URLWithString("a:" + std::string(1 << 20, ':')));
  // Characters that a mutable text stores in 16-bit units.
  NSMutableString wide{NSString("é")};
  wide.setString("http://h/");
  EXPECT_EQ(host(NSURL::URLWithString(wide)), "h");
}

TEST(PercentEncoding, IsOfUTF8) {
  constexpr Set query = Set::URLQueryAllowedCharacterSet();
  const auto add = stringByAddingPercentEncodingWithAllowedCharacters;
  EXPECT_EQ(add("a b%é😀\x7F", query), "a%20b%25%C3%A9%F0%9F%98%80%7F");
  EXPECT_EQ(add("a%", query | Set("%\xC3\xA9")), "a%");
  EXPECT_TRUE(add(loneSurrogate, query).isNil() && add(nullptr, query).isNil());
  // clang-format off
  const std::pair<const char*, const char*> cases[] = {
      {"", ""}, {"é", "é"}, {"%c3%A9é%25", "éé%"}, {"+%2B", "++"}, {"%F0%9F%98%80", "😀"},
      {"%", "-"}, {"a%4", "-"}, {"%zz", "-"}, {"é%C3", "-"}, {"%C3x", "-"}, {"%ED%A0%80", "-"},
      {"%C0%80", "-"}};
  // clang-format on
  for (const auto& [text, decoded] : cases) {
    EXPECT_EQ(shown(stringByRemovingPercentEncoding(text)), decoded) << text;
  }
  EXPECT_TRUE(!stringByRemovingPercentEncoding(loneSurrogate) &&
              !stringByRemovingPercentEncoding(nullptr));
  // The sets, by what they encode of all ASCII punctuation.
  const std::string punctuation = "!\"#$%&'()*+,-./:;<=>?@[\\]^_`{|}~";
  for (const auto& [set, refused] :
       {std::pair(Set::URLPasswordAllowedCharacterSet(), "\"#%/<>?@[\\]^`{|}"),
        std::pair(Set::URLUserAllowedCharacterSet(), "\"#%/:<>?@[\\]^`{|}"),
        std::pair(Set::URLPathAllowedCharacterSet(), "\"#%<>?[\\]^`{|}"),
        std::pair(Set::URLFragmentAllowedCharacterSet(), "\"#%<>[\\]^`{|}")})
    EXPECT_EQ(Set(punctuation) - set, Set(refused));
}

TEST(NSURLComponents, EncodeWhatIsSet) {
  auto parts = makeRef<NSURLComponents>();
  parts->setScheme("https");
  parts->setUser("a:b@é");
  parts->setPassword("p:/");
  parts->setHost("h/é");
  parts->setPort(8080);
  parts->setPath("/a b?#é");
  parts->setQuery("q [é]?");
  parts->setFragment(loneSurrogate);
  EXPECT_EQ(parts->string(),
            "https://a%3Ab%40%C3%A9:p:%2F@h%2F%C3%A9:8080/a%20b%3F%23%C3%A9?"
            "q%20%5B%C3%A9%5D?#a%EF%BF%BD");
  const auto same = NSURLComponents::componentsWithString(parts->string());
  EXPECT_TRUE(same->isEqual(*parts) && same->hash() == parts->hash());
  const auto copy = parts->copy();
  copy->setHost("[::1]");
  copy->setPort(nullptr);
  copy->setUser(nullptr);
  EXPECT_EQ(copy->URL().absoluteString().substringToIndex(20), "https://:p:%2F@[::1]");
  parts->setPath("a");
  EXPECT_TRUE(parts->string().isNil() && parts->URL().isNil());
  for (const char* path : {"//a", "a:b/c"}) {
    const auto relative = makeRef<NSURLComponents>();
    relative->setPath(path);
    EXPECT_TRUE(relative->string().isNil());
  }
  EXPECT_TRUE(!NSURLComponents::componentsWithString("a b") &&
              !NSURLComponents::componentsWithURL(nullptr, true));
}

TEST(NSURLComponents, RefuseWhatAPartCannotContain) {
  using C = NSURLComponents;
  const auto parts = C::componentsWithString("a://u:p@h:1/p?q#f");
  // clang-format off
  const std::pair<void (C::*)(const NSString&), const char*> cases[] = {
      {&C::setScheme, "1"}, {&C::setScheme, ""}, {&C::setPercentEncodedUser, "a:"},
      {&C::setPercentEncodedPassword, "%4"}, {&C::setPercentEncodedHost, "[::1"},
      {&C::setPercentEncodedPath, "?"}, {&C::setPercentEncodedQuery, "é"},
      {&C::setPercentEncodedFragment, "#"}};
  // clang-format on
  for (const auto& [set, text] : cases)
    EXPECT_EQ(raisedName([&] { ((*parts).*set)(text); }), NSInvalidArgumentException) << text;
  for (const NSNumber& port : {NSNumber(65536), NSNumber(-1), NSNumber(1.5)})
    EXPECT_EQ(raisedName([&] { parts->setPort(port); }), NSInvalidArgumentException) << port;
  const NSArray items{Value(NSURLQueryItem::queryItemWithName("a=", nullptr))};
  EXPECT_EQ(raisedText([&] { parts->setPercentEncodedQueryItems(items); }),
            "NSInvalidArgumentException: A name or value in the query of a URL cannot be \"a=\"");
  EXPECT_EQ(parts->string(), "a://u:p@h:1/p?q#f");
}

TEST(NSURLComponents, DivideTheQuery) {
  for (const auto& [text, items] :
       {std::pair("a", "-"), std::pair("?", "()"),
        std::pair("?a=1&b&&=&c=d=%3D&%FF=+", "(a=1,b,,=,c=d==,%FF=+)")}) {
    const auto parts = NSURLComponents::componentsWithString(text);
    std::string joined = "-";
    if (const NSArray list = parts->queryItems())
      joined = "(" + list.componentsJoinedByString(",").utf8() + ")";
    EXPECT_EQ(joined, items);
    parts->setPercentEncodedQueryItems(parts->percentEncodedQueryItems());
    EXPECT_EQ(parts->string(), text);
  }
  const auto parts = makeRef<NSURLComponents>();
  parts->setQueryItems({Value(NSURLQueryItem::queryItemWithName("a&=+;b", "é=&")), Value(1),
                        Value(NSURLQueryItem::queryItemWithName(nullptr, nullptr))});
  EXPECT_EQ(parts->percentEncodedQuery(), "a%26%3D%2B%3Bb=%C3%A9%3D%26&");
}

}  // namespace zeb::test
