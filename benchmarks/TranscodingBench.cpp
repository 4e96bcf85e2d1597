#include <ZEBPlatform/Foundation/NSString.h>
#include <ZEBPlatform/Foundation/detail/UnicodeConverter.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "Bench.h"
#include "TextPeers.h"

namespace zeb::bench {

namespace {

struct Script {
  const char* name;
  std::vector<std::u16string_view> words;
};

const Script scripts[] = {
    {"Latin", {u"Gr\u00FC\u00DFe", u"aus", u"M\u00FCnchen,", u"d\u00E9j\u00E0", u"vu", u"and"}},
    {"Greek",
     {u"\u03BA\u03B1\u03BB\u03B7\u03BC\u03AD\u03C1\u03B1", u"\u03BA\u03CC\u03C3\u03BC\u03B5"}},
    {"Cyrillic", {u"\u043F\u0440\u0438\u0432\u0435\u0442,", u"\u043C\u0438\u0440", u"\u0438"}},
    {"Hebrew", {u"\u05E9\u05DC\u05D5\u05DD", u"\u05E2\u05D5\u05DC\u05DD"}},
    {"Arabic",
     {u"\u0645\u0631\u062D\u0628\u0627", u"\u0628\u0627\u0644\u0639\u0627\u0644\u0645\u060C"}},
    {"Devanagari",
     {u"\u0928\u092E\u0938\u094D\u0924\u0947", u"\u0926\u0941\u0928\u093F\u092F\u093E"}},
    {"Thai", {u"\u0E2A\u0E27\u0E31\u0E2A\u0E14\u0E35\u0E0A\u0E32\u0E27\u0E42\u0E25\u0E01"}},
    {"Chinese", {u"\u4F60\u597D\uFF0C\u4E16\u754C\u3002", u"\u6211\u5011\u4ECA\u5929\u898B\u9762"}},
    {"Korean", {u"\uC548\uB155\uD558\uC138\uC694", u"\uC138\uACC4"}},
    {"emoji", {u"\U0001F600", u"see", u"\U0001F44D\U0001F3FD", u"you", u"\u2764\uFE0F", u"soon"}}};

/// Messages of 40 words, 100 for each script.
std::vector<std::u16string> messages(const Script& script) {
  std::mt19937 random(1);
  std::vector<std::u16string> texts(100);
  for (std::u16string& text : texts) {
    for (int word = 0; word < 40; ++word) {
      if (word > 0) text += u' ';
      text += script.words[random() % script.words.size()];
    }
  }
  return texts;
}

/// Messages in both forms, and room for the longest one in either.
struct Texts {
  explicit Texts(const Script& script) : wide(messages(script)) {
    for (const std::u16string& text : wide) {
      strings.emplace_back(std::u16string_view(text));
      utf8.push_back(strings.back().utf8());
      bytes += static_cast<double>(utf8.back().size());
      units.resize(std::max(units.size(), utf8.back().size()));
    }
    chars.resize(3 * units.size());
  }

  std::vector<std::u16string> wide;
  std::vector<std::string> utf8;
  std::vector<NSString> strings;
  double bytes = 0;
  std::u16string units;
  std::string chars;
};

/// `ours` and `theirs` convert all messages and answer the sum of the lengths.
template <class Ours, class Theirs>
void compare(Report& report, const char* ownName, const char* peerName, const Ours& ours,
             const Theirs& theirs) {
  Comparison comparison{megabytesPerSecond, ownName, peerName, {}};
  for (const Script& script : scripts) {
    Texts texts(script);
    const auto peer = theirs(texts);
    require(ours(texts) == peer(), "the two sides convert differently");
    const Seconds seconds = measureInTurns([&] { consume(ours(texts)); }, [&] { consume(peer()); });
    comparison.samples.push_back(
        {script.name, texts.bytes / seconds.ours / 1e6, texts.bytes / seconds.peer / 1e6});
  }
  report.add(std::move(comparison));
}

std::size_t readInto(Texts& texts) {
  const detail::UnicodeConverter& converter = detail::unicodeConverter();
  std::size_t sum = 0;
  for (const std::string& text : texts.utf8) sum += converter.decode(text, texts.units.data());
  return sum;
}

std::size_t writeInto(Texts& texts) {
  const detail::UnicodeConverter& converter = detail::unicodeConverter();
  std::size_t sum = 0;
  for (const std::u16string& text : texts.wide) {
    sum += converter.encode(text, texts.chars.data(), texts.chars.size());
  }
  return sum;
}

std::size_t icuReadInto(Texts& texts) {
  std::size_t sum = 0;
  for (const std::string& text : texts.utf8) {
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t length = 0;
    u_strFromUTF8(texts.units.data(), static_cast<std::int32_t>(texts.units.size()), &length,
                  text.data(), static_cast<std::int32_t>(text.size()), &status);
    sum += static_cast<std::size_t>(length);
  }
  return sum;
}

std::size_t icuWriteInto(Texts& texts) {
  std::size_t sum = 0;
  for (const std::u16string& text : texts.wide) {
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t length = 0;
    u_strToUTF8(texts.chars.data(), static_cast<std::int32_t>(texts.chars.size()), &length,
                text.data(), static_cast<std::int32_t>(text.size()), &status);
    sum += static_cast<std::size_t>(length);
  }
  return sum;
}

void measureTranscoding(Report& report) {
  compare(report, "UTF-8 to UTF-16 in one buffer", "u_strFromUTF8 in one buffer", readInto,
          [](Texts& texts) { return [&texts] { return icuReadInto(texts); }; });
  compare(report, "UTF-16 to UTF-8 in one buffer", "u_strToUTF8 in one buffer", writeInto,
          [](Texts& texts) { return [&texts] { return icuWriteInto(texts); }; });
#if ZEB_BENCH_HAVE_QT
  compare(
      report, "NSString of UTF-8", "QString::fromUtf8",
      [](const Texts& texts) {
        std::size_t sum = 0;
        for (const std::string& text : texts.utf8) sum += NSString(text).length();
        return sum;
      },
      [](const Texts& texts) {
        return [&texts] {
          std::size_t sum = 0;
          for (const std::string& text : texts.utf8) sum += qtLengthOfUTF8(text);
          return sum;
        };
      });
  compare(
      report, "NSString::utf8", "QString::toUtf8",
      [](const Texts& texts) {
        std::size_t sum = 0;
        for (const NSString& text : texts.strings) sum += text.utf8().size();
        return sum;
      },
      [](const Texts& texts) {
        return [peer = std::make_shared<QtTexts>(texts.wide)] { return peer->toUTF8(); };
      });
#else
  report.skip("QString");
#endif
}

const Case transcoding("text.utf8", measureTranscoding);

}  // namespace

}  // namespace zeb::bench
