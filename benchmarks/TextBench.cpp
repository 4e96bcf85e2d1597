#include <ZEBUtilities/Text.h>
#include <time.h>
#include <unicode/ubrk.h>

#include <memory>
#include <random>
#include <string_view>

#include "Bench.h"
#include "TextPeers.h"

namespace zeb::bench {

namespace {

struct Script {
  const char* name;
  std::vector<std::u16string_view> words;
};

const Script scripts[] = {
    {"ASCII", {u"the", u"quick", u"brown", u"fox", u"jumps,", u"over", u"a", u"lazy", u"dog."}},
    {"Arabic",
     {u"\u0645\u0631\u062D\u0628\u0627", u"\u0628\u0627\u0644\u0639\u0627\u0644\u0645\u060C",
      u"\u0643\u064A\u0641", u"\u062D\u0627\u0644\u0643\u061F", u"\u0641\u064A",
      u"\u0627\u0644\u0645\u062F\u064A\u0646\u0629"}},
    {"emoji",
     {u"\U0001F600", u"see", u"\U0001F44D\U0001F3FD", u"you", u"\u2764\uFE0F", u"soon",
      u"\U0001F468\u200D\U0001F469\u200D\U0001F467", u"\U0001F1E6\U0001F1F9", u"caf\u00E9"}},
};

std::u16string sentence(const Script& script, std::size_t words, std::mt19937& random) {
  std::u16string text;
  for (std::size_t word = 0; word < words; ++word) {
    if (word > 0) text += u' ';
    text += script.words[random() % script.words.size()];
  }
  return text;
}

/// What people type into a field: every second text has white space around it.
std::vector<std::u16string> typedTexts(const Script& script) {
  constexpr std::u16string_view spaces[] = {u"", u" ", u"", u"  ", u"", u"\n", u"", u"\u00A0 "};
  std::mt19937 random(1);
  std::vector<std::u16string> texts;
  for (int count = 0; count < 1'000; ++count) {
    const auto space = [&] {
      // White space outside ASCII would change how texts of ASCII are stored.
      return std::u16string(spaces[random() % (script.name == scripts[0].name ? 6 : 8)]);
    };
    texts.push_back(space() + sentence(script, 1 + random() % 8, random) + space());
  }
  return texts;
}

/// Texts with invisible characters before the first visible one, and some that show nothing.
std::vector<std::u16string> fieldTexts(const Script& script) {
  constexpr std::u16string_view invisible[] = {u" ", u"\n", u"\t", u"\u200F", u"\u00A0", u"\u200B"};
  std::mt19937 random(2);
  std::vector<std::u16string> texts;
  for (int count = 0; count < 1'000; ++count) {
    std::u16string text;
    for (std::size_t units = random() % 12; units > 0; --units) {
      text += invisible[random() % (script.name == scripts[0].name ? 3 : 6)];
    }
    if (random() % 4 != 0) text += sentence(script, 3, random);
    texts.push_back(text);
  }
  return texts;
}

std::vector<NSString> ownTexts(const std::vector<std::u16string>& texts) {
  std::vector<NSString> own;
  for (const std::u16string& text : texts) own.emplace_back(std::u16string_view(text));
  return own;
}

#if ZEB_BENCH_HAVE_QT

using TextsOf = std::vector<std::u16string> (*)(const Script& script);

/// `ours` and `theirs` do the work for all texts and answer a number that must be equal.
template <class Ours, class Theirs>
void compareWithQt(Report& report, TextsOf textsOf, const char* ownName, const char* peerName,
                   const Ours& ours, const Theirs& theirs) {
  Comparison comparison{nanoseconds, ownName, peerName, {}};
  for (const Script& script : scripts) {
    const std::vector<std::u16string> texts = textsOf(script);
    const std::vector<NSString> own = ownTexts(texts);
    const QtTexts peer(texts);
    require(ours(own) == theirs(peer), "the two sides do not do the same work");
    const Seconds seconds =
        measureInTurns([&] { consume(ours(own)); }, [&] { consume(theirs(peer)); });
    const auto count = static_cast<double>(texts.size());
    comparison.samples.push_back(
        {script.name, seconds.ours / count * 1e9, seconds.peer / count * 1e9});
  }
  report.add(comparison);
}

void measureTrimming(Report& report) {
  compareWithQt(
      report, typedTexts, "trimming in three ways and testing", "QString",
      [](const std::vector<NSString>& texts) {
        std::size_t sum = 0;
        for (const NSString& text : texts) {
          sum += zeb_stringByTrimmingWhitespace(text).length() +
                 zeb_stringByTrimmingLeadingWhitespace(text).length() +
                 zeb_stringByTrimmingTrailingWhitespace(text).length() +
                 isNotEmptyAfterTrimmingWhitespace(text);
        }
        return sum;
      },
      [](const QtTexts& texts) { return texts.trim(); });
}

void measurePrintable(Report& report) {
  compareWithQt(
      report, fieldTexts, "containsPrintableCharacters", "QChar categories and a table",
      [](const std::vector<NSString>& texts) {
        std::size_t count = 0;
        for (const NSString& text : texts) count += zeb_containsPrintableCharacters(text);
        return count;
      },
      [](const QtTexts& texts) { return texts.countPrintable(); });
}

#else

void measureTrimming(Report& report) { report.skip("QString"); }
void measurePrintable(Report& report) { report.skip("QString"); }

#endif

const Case trimming("text.trim", measureTrimming);
const Case printable("text.printable", measurePrintable);

/// The word at each index of a page.
void measureWords(Report& report) {
  Comparison comparison{nanoseconds, "wordRangeForIndex", "ICU iterator over the whole page", {}};
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UBreakIterator, void (*)(UBreakIterator*)> iterator(
      ubrk_open(UBRK_WORD, "", nullptr, 0, &status), ubrk_close);
  require(U_SUCCESS(status), "ICU has no word iterator");
  for (const Script& script : scripts) {
    std::mt19937 random(3);
    const std::u16string page = sentence(script, 400, random);
    const NSString text{std::u16string_view(page)};
    const auto theirs = [&](std::size_t index) -> NSRange {
      UErrorCode setting = U_ZERO_ERROR;
      ubrk_setText(iterator.get(), page.data(), static_cast<std::int32_t>(page.size()), &setting);
      const std::int32_t end = ubrk_following(iterator.get(), static_cast<std::int32_t>(index));
      if (ubrk_getRuleStatus(iterator.get()) < UBRK_WORD_LETTER) return {NSNotFound, 0};
      const std::int32_t begin = ubrk_previous(iterator.get());
      return {static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin)};
    };
    const auto sum = [&](const auto& range) {
      std::size_t total = 0;
      for (std::size_t index = 0; index < page.size(); ++index) total += range(index).length;
      return total;
    };
    const auto ours = [&](std::size_t index) {
      return wordRangeForIndex(text, static_cast<std::ptrdiff_t>(index));
    };
    for (std::size_t index = 0; index < page.size(); ++index) {
      require(ours(index) == theirs(index), "the two sides find different words");
    }
    const Seconds seconds =
        measureInTurns([&] { consume(sum(ours)); }, [&] { consume(sum(theirs)); });
    const auto count = static_cast<double>(page.size());
    comparison.samples.push_back(
        {script.name, seconds.ours / count * 1e9, seconds.peer / count * 1e9});
  }
  report.add(comparison);
}

const Case words("text.words", measureWords);

void measureTimestamps(Report& report) {
  std::mt19937 random(4);
  std::vector<std::string> texts;
  std::vector<NSString> own;
  for (int count = 0; count < 1'000; ++count) {
    const auto moment = static_cast<time_t>(random());
    tm time{};
    gmtime_r(&moment, &time);
    char text[64];
    strftime(text, sizeof text, "%a %b %d %H:%M:%S +0000 %Y", &time);
    texts.emplace_back(text);
    own.emplace_back(texts.back());
  }
  const auto ours = [&] {
    double sum = 0;
    for (const NSString& text : own) {
      sum += zeb_dateFromStringFormattedLikeHTTPDate(text).timeIntervalSince1970();
    }
    return sum;
  };
  const auto theirs = [&] {
    double sum = 0;
    for (const std::string& text : texts) {
      tm time{};
      strptime(text.c_str(), "%a %b %d %H:%M:%S %z %Y", &time);
      const long offset = time.tm_gmtoff;
      sum += static_cast<double>(timegm(&time) - offset);
    }
    return sum;
  };
  require(ours() == theirs(), "the two sides read different moments");
  report.add(nanosecondsEach("dateFromStringFormattedLikeHTTPDate", "strptime and timegm",
                             measureInTurns([&] { consume(ours()); }, [&] { consume(theirs()); }),
                             texts.size()));
}

const Case timestamps("date.parse", measureTimestamps);

}  // namespace

}  // namespace zeb::bench
