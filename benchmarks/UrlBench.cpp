#include <ZEBPlatform/Url.h>
#include <ZEBUtilities/URLs.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "Bench.h"

#if ZEB_BENCH_HAVE_URIPARSER
#include <uriparser/Uri.h>
#endif
#if ZEB_BENCH_HAVE_LIBIDN
#include <idna.h>
#endif
#if ZEB_BENCH_HAVE_BOOST_URL
#include <boost/url.hpp>
#endif

namespace zeb::bench {

namespace {

struct Input {
  const char* name;
  std::string text;
};

const std::vector<Input>& inputsOfParse() {
  static const std::vector<Input> inputs = {
      {"host", "https://www.example.com/"},
      {"article", "https://news.example.com/2024/05/17/long-title-of-an-article-42.html#comments"},
      {"query",
       "https://api.example.com:8443/v2/search?q=caf%C3%A9%20au%20lait&lang=fr&page=3&"
       "sort=date&filter=new&cursor=eyJpZCI6MTIzNDU2Nzg5MH0"},
      {"address", "http://user:secret@[2001:db8::8a2e:370:7334]:8080/a/b/c"},
      {"relative", "../images/2024/logo.svg?v=3"}};
  return inputs;
}

/// Measures both with each input. `prepare` checks that they do the same work.
template <class Prepare>
void measure(Report& report, const std::vector<Input>& inputs, const char* ours, const char* peer,
             const Prepare& prepare) {
  Comparison comparison{nanoseconds, ours, peer, {}};
  for (const auto& [name, text] : inputs) {
    const auto [run, runPeer] = prepare(text);
    const Seconds seconds = measureInTurns(run, runPeer);
    comparison.samples.push_back({name, seconds.ours * 1e9, seconds.peer * 1e9});
  }
  report.add(std::move(comparison));
}

struct Work {
  std::function<void()> ours;
  std::function<void()> peer;
};

[[maybe_unused]] std::function<void()> parseByUs(const NSString& text) {
  return [text] { consume(NSURL::URLWithString(text)); };
}

#if ZEB_BENCH_HAVE_URIPARSER

[[maybe_unused]] std::string textOf(const UriTextRangeA& range) {
  return range.first ? std::string(range.first, range.afterLast) : std::string();
}

Work parseWithUriparser(const std::string& text) {
  const NSURL url = NSURL::URLWithString(text);
  UriUriA uri;
  const char* error = nullptr;
  require(uriParseSingleUriA(&uri, text.c_str(), &error) == URI_SUCCESS && !url.isNil() &&
              textOf(uri.hostText) == host(url).utf8() && textOf(uri.query) == query(url).utf8(),
          "different parts");
  uriFreeUriMembersA(&uri);
  return {parseByUs(text), [text] {
            UriUriA parsed;
            const char* place = nullptr;
            consume(uriParseSingleUriA(&parsed, text.c_str(), &place));
            consume(parsed);
            uriFreeUriMembersA(&parsed);
          }};
}

#endif

#if ZEB_BENCH_HAVE_BOOST_URL

Work parseWithBoost(const std::string& text) {
  const NSURL url = NSURL::URLWithString(text);
  const auto theirs = boost::urls::parse_uri_reference(text);
  require(theirs.has_value() && !url.isNil() &&
              std::string(theirs->encoded_query().data(), theirs->encoded_query().size()) ==
                  query(url).utf8(),
          "different parts");
  return {parseByUs(text), [text] { consume(boost::urls::parse_uri_reference(text)); }};
}

#endif

const Case parse("url.parse", [](Report& report) {
#if ZEB_BENCH_HAVE_URIPARSER
  measure(report, inputsOfParse(), "NSURL", "uriparser", parseWithUriparser);
#else
  report.skip("uriparser");
#endif
#if ZEB_BENCH_HAVE_BOOST_URL
  measure(report, inputsOfParse(), "NSURL", "Boost.URL, views of the text", parseWithBoost);
#else
  report.skip("Boost.URL");
#endif
});

#if ZEB_BENCH_HAVE_URIPARSER && ZEB_BENCH_HAVE_LIBIDN

/// Host in Unicode, decoded path, query and fragment.
std::string displayByPeers(const std::string& text) {
  UriUriA uri;
  const char* error = nullptr;
  if (uriParseSingleUriA(&uri, text.c_str(), &error) != URI_SUCCESS) return {};
  std::string result;
  char* host = nullptr;
  if (idna_to_unicode_8z8z(textOf(uri.hostText).c_str(), &host, 0) == IDNA_SUCCESS) result = host;
  std::free(host);
  for (const UriPathSegmentA* segment = uri.pathHead; segment; segment = segment->next) {
    std::string decoded = textOf(segment->text);
    decoded.resize(static_cast<std::size_t>(uriUnescapeInPlaceA(decoded.data()) - decoded.data()));
    result += '/';
    result += decoded;
  }
  if (uri.query.first) result += '?' + textOf(uri.query);
  if (uri.fragment.first) result += '#' + textOf(uri.fragment);
  uriFreeUriMembersA(&uri);
  return result;
}

Work display(const std::string& text) {
  const NSString ours(text);
  require(zeb_displayString(NSURL::URLWithString(ours)).utf8() == displayByPeers(text),
          "different texts");
  return {[ours] { consume(zeb_displayString(NSURL::URLWithString(ours))); },
          [text] { consume(displayByPeers(text)); }};
}

const Case displayCase("url.display", [](Report& report) {
  const std::vector<Input> inputs = {
      {"ASCII", "https://www.example.com/2024/05/17/article.html?ref=home"},
      {"Latin", "https://xn--bcher-kva.example/kuchen/rezepte?seite=2"},
      {"CJK", "https://xn--r8jz45g.xn--zckzah/%E3%83%9A%E3%83%BC%E3%82%B8#a"},
      {"Arabic", "https://xn--mgbh0fb.xn--kgbechtv/%D8%B5%D9%81%D8%AD%D8%A9"}};
  measure(report, inputs, "zeb_displayString", "libidn and uriparser", display);
});

#else

const Case displayCase("url.display", [](Report& report) { report.skip("libidn and uriparser"); });

#endif

}  // namespace

}  // namespace zeb::bench
