#include <ZEBPlatform/Geometry/NSValue.h>
#include <ZEBUtilities/Text.h>
#include <unicode/ubrk.h>
#include <unicode/uchar.h>
#include <unicode/utf16.h>

#include "Bench.h"
#include "EntitiesPeers.h"

#if ZEB_BENCH_HAVE_LIBXML2
#include <libxml/HTMLparser.h>
#include <libxml/parserInternals.h>
#endif

namespace zeb::bench {

namespace {

template <class Text>
Text repeated(const Text& piece, std::size_t length) {
  Text text;
  while (text.size() < length) text += piece;
  return text;
}

// text.rtl: both tests of a text's direction. The strings of both sides are made beforehand. Ours
// stores ASCII as bytes and then decides without looking at them.

constexpr const char* qtName = "QString, loops over its units";

void measureDirection([[maybe_unused]] Report& report) {
#if ZEB_BENCH_HAVE_QT
  const std::pair<const char*, std::u16string> pieces[] = {
      {"ASCII text", u"What people type, in every script. "},
      {"Arabic text", u"ما يكتبه الناس بكل اللغات، وما يقرؤونه. "},
      {"emoji text", u"😀👍🏽🎉👩‍🚀❤️ "}};
  constexpr std::size_t length = 1000;
  for (const auto& [name, piece] : pieces) {
    const std::u16string units = repeated(piece, length);
    const NSString text{std::u16string_view(units)};
    const DirectionWork ours = [&text] {
      return static_cast<unsigned>(zeb_containsRTLCharacters(text)) |
             static_cast<unsigned>(zeb_plainTextShouldBeRenderedFromRight(text)) << 1;
    };
    const DirectionWork peers = directionWorkWithQt(units);
    require(ours() == peers(), "the two sides see different directions");
    report.add(nanosecondsEach(
        name, qtName, measureInTurns([&] { consume(ours()); }, [&] { consume(peers()); }), 1));
  }
#else
  report.skip(qtName);
#endif
}

const Case direction("text.rtl", measureDirection);

// entities.unescape: ours makes a mutable copy of the text, unescapes it and adjusts the ranges.
// libxml2 gets the text only. Its xmlStringDecodeEntities with the entities of HTML declared in a
// document is the fastest of its ways to decode: it is faster than its HTML parser with a handler
// of characters and without a tree.

constexpr const char* xmlName = "xmlStringDecodeEntities, no ranges";

#if ZEB_BENCH_HAVE_LIBXML2

class XmlDecoder {
 public:
  XmlDecoder() : context_(xmlNewParserCtxt()) {
    const auto bytes = [](const char* text) { return reinterpret_cast<const xmlChar*>(text); };
    context_->userData = context_;
    context_->options |= XML_PARSE_HUGE;
    context_->myDoc = xmlNewDoc(bytes("1.0"));
    xmlCreateIntSubset(context_->myDoc, bytes("html"), nullptr, nullptr);
    constexpr unsigned firstEntity = 0xA0, lastEntity = 0x2666;
    for (unsigned value = firstEntity; value <= lastEntity; ++value) {
      const htmlEntityDesc* entity = htmlEntityValueLookup(value);
      if (!entity) continue;
      xmlChar text[5] = {};
      xmlCopyChar(0, text, static_cast<int>(value));
      xmlAddDocEntity(context_->myDoc, bytes(entity->name), XML_INTERNAL_GENERAL_ENTITY, nullptr,
                      nullptr, text);
    }
  }
  XmlDecoder(const XmlDecoder&) = delete;
  XmlDecoder& operator=(const XmlDecoder&) = delete;
  ~XmlDecoder() {
    xmlFreeDoc(context_->myDoc);
    xmlFreeParserCtxt(context_);
  }

  /// Gives the text to `use`, which must not keep it.
  template <class Use>
  void decode(const std::string& escaped, const Use& use) {
    const auto* bytes = reinterpret_cast<const xmlChar*>(escaped.c_str());
    xmlChar* text = xmlStringDecodeEntities(context_, bytes, XML_SUBSTITUTE_REF, 0, 0, 0);
    use(reinterpret_cast<const char*>(text));
    xmlFree(text);
  }

 private:
  xmlParserCtxtPtr context_;
};

#endif

void measureUnescaping([[maybe_unused]] Report& report) {
#if ZEB_BENCH_HAVE_LIBXML2
  const std::pair<const char*, std::string> pieces[] = {
      {"ASCII", "Ada &amp; Noor liked &quot;caf&eacute;s&quot; &#8230; and wrote &lt;3 to all. "},
      {"Cyrillic", "Ада &amp; Нур пишут: &laquo;кафе&raquo; &#8230; и ещё &lt;3 для всех. "}};
  constexpr std::size_t length = 50'000;
  XmlDecoder decoder;
  for (const std::size_t rangeCount : std::initializer_list<std::size_t>{0, 10, 1000}) {
    Comparison comparison{megabytesPerSecond, std::to_string(rangeCount) + " ranges", xmlName, {}};
    Comparison plainComparison{
        megabytesPerSecond, std::to_string(rangeCount) + " plain ranges", xmlName, {}};
    for (const auto& [name, piece] : pieces) {
      const std::string utf8 = repeated(piece, length);
      const NSString text(utf8);
      NSMutableArray ranges;
      for (std::size_t i = 0; i < rangeCount; ++i) {
        ranges.addObject(boxed(NSRange{text.length() * i / rangeCount, 20}));
      }
      const auto unescape = [&] {
        NSMutableString copy(text);
        consume(zeb_unescapeHTMLEntitiesAdjustingTextRanges(copy, ranges));
        return copy;
      };
      decoder.decode(utf8, [&](const char* decoded) {
        require(decoded && unescape() == NSString(decoded), "the two sides decode differently");
      });
      const Seconds seconds = measureInTurns(
          [&] { consume(unescape()); },
          [&] { decoder.decode(utf8, [](const char* decoded) { consume(decoded); }); });
      std::vector<NSRange> plainRanges;
      for (const Value& range : ranges) plainRanges.push_back(*unboxed<NSRange>(range));
      const Seconds plainSeconds = measureInTurns(
          [&] {
            NSMutableString copy(text);
            std::vector<NSRange> adjusted = plainRanges;
            zeb_unescapeHTMLEntitiesAdjustingTextRanges(copy, adjusted);
            consume(copy);
          },
          [&] { decoder.decode(utf8, [](const char* decoded) { consume(decoded); }); });
      const double megabytes = static_cast<double>(utf8.size()) / 1e6;
      comparison.samples.push_back({name, megabytes / seconds.ours, megabytes / seconds.peer});
      plainComparison.samples.push_back(
          {name, megabytes / plainSeconds.ours, megabytes / plainSeconds.peer});
    }
    report.add(std::move(comparison));
    if (rangeCount > 10) report.add(std::move(plainComparison));
  }
#else
  report.skip(xmlName);
#endif
}

const Case unescaping("entities.unescape", measureUnescaping);

// emoji.only: both sides apply the same rules to each composed character sequence of the text.

class IcuLoop {
 public:
  IcuLoop() {
    UErrorCode status = U_ZERO_ERROR;
    iterator_ = ubrk_open(UBRK_CHARACTER, "", nullptr, 0, &status);
    require(U_SUCCESS(status), "ICU has no break iterator");
  }
  IcuLoop(const IcuLoop&) = delete;
  IcuLoop& operator=(const IcuLoop&) = delete;
  ~IcuLoop() { ubrk_close(iterator_); }

  bool containsOnlyEmoji(const std::u16string& text) {
    UErrorCode status = U_ZERO_ERROR;
    ubrk_setText(iterator_, text.data(), static_cast<std::int32_t>(text.size()), &status);
    std::int32_t start = ubrk_first(iterator_);
    for (std::int32_t end; (end = ubrk_next(iterator_)) != UBRK_DONE; start = end) {
      if (!isEmoji(text.data() + start, end - start)) return false;
    }
    return true;
  }

 private:
  static bool isEmoji(const char16_t* units, std::int32_t length) {
    std::int32_t index = 0;
    UChar32 first, second = 0, other;
    U16_NEXT(units, index, length, first);
    if (U_IS_SURROGATE(first)) return false;
    bool isKeycap = false;
    for (bool isSecond = true; index < length; isSecond = false) {
      U16_NEXT(units, index, length, other);
      if (U_IS_SURROGATE(other)) return false;
      if (isSecond) second = other;
      isKeycap |= other == 0x20E3;
    }
    if (second == 0xFE0E) return false;
    if (u_hasBinaryProperty(first, UCHAR_REGIONAL_INDICATOR)) {
      return u_hasBinaryProperty(second, UCHAR_REGIONAL_INDICATOR);
    }
    if (first < 0x80) return isKeycap;
    return u_hasBinaryProperty(first, UCHAR_EMOJI);
  }

  UBreakIterator* iterator_ = nullptr;
};

void measureEmoji(Report& report) {
  const std::pair<const char*, std::u16string> texts[] = {
      {"one", u"😀"},
      {"five", u"😀🎉🔥👍😂"},
      {"composed", u"👍🏽❤️👩‍🚀🇯🇵1️⃣👨‍👩‍👧"},
      {"long", repeated<std::u16string>(u"😀👍🏽🇯🇵", 1000)}};
  Comparison comparison{nanoseconds, "zeb_containsOnlyEmoji", "ICU, iterator kept", {}};
  IcuLoop icu;
  for (const auto& [name, units] : texts) {
    const NSString text{std::u16string_view(units)};
    const NSString broken = text + " ";
    require(zeb_containsOnlyEmoji(text) && icu.containsOnlyEmoji(units) &&
                !zeb_containsOnlyEmoji(broken) && !icu.containsOnlyEmoji(broken.utf16()),
            "the two sides see different emoji");
    const Seconds seconds = measureInTurns([&] { consume(zeb_containsOnlyEmoji(text)); },
                                           [&] { consume(icu.containsOnlyEmoji(units)); });
    comparison.samples.push_back({name, seconds.ours * 1e9, seconds.peer * 1e9});
  }
  report.add(std::move(comparison));
}

const Case emoji("emoji.only", measureEmoji);

}  // namespace

}  // namespace zeb::bench
