#include <ZEBUtilities/IDN.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "Bench.h"

#if ZEB_BENCH_HAVE_LIBIDN
#include <idna.h>
#include <punycode.h>
#include <stringprep.h>
#endif

namespace zeb::bench {

namespace {

constexpr const char* peerName = "GNU libidn";

#if ZEB_BENCH_HAVE_LIBIDN

/// Labels of one script, as they come from people.
struct Labels {
  const char* name;
  std::vector<std::u32string> texts;
};

const std::vector<Labels>& allLabels() {
  static const std::vector<Labels> labels = {
      {"ASCII", {U"example", U"www", U"mail-server-01", U"Documentation"}},
      {"Latin", {U"bücher", U"Straßenbahn", U"señor-muñoz", U"ČESKÝ"}},
      {"CJK", {U"例え", U"中文域名测试", U"なぜみんな日本語を話してくれないのか", U"한국어"}},
      {"Arabic", {U"مثال", U"إختبار", U"ليهمابتكلموشعربي"}},
  };
  return labels;
}

/// A label in the forms that the two libraries take. None of them is outside the 16-bit units.
struct Label {
  explicit Label(const std::u32string& text)
      : units(text.begin(), text.end()),
        codePoints(text.begin(), text.end()),
        peerCodePoints(text.begin(), text.end()),
        octets(text.begin(), text.end()) {}

  std::int32_t count() const { return static_cast<std::int32_t>(units.size()); }

  std::u16string units;
  std::vector<XcodeCodePoint> codePoints;
  std::vector<std::uint32_t> peerCodePoints;
  std::vector<XcodeOctet> octets;  ///< of a label that is ASCII
};

std::vector<Label> labelsOf(const std::vector<std::u32string>& texts) {
  return std::vector<Label>(texts.begin(), texts.end());
}

template <class Element>
std::u32string text(const Element* elements, std::size_t count) {
  return std::u32string(elements, elements + count);
}

/// The result of each library is a text, so that all conversions are compared and measured alike.
using Output = std::array<XcodeCodePoint, 64>;
using PeerOutput = std::array<std::uint32_t, 256>;

/// Measures the conversions of all labels of each script. Each side writes into its buffer and
/// answers the length, 0 if it failed.
template <class Ours, class Peer>
void measure(Report& report, const char* function, bool withASCII,
             const std::function<std::u32string(const std::u32string&)>& prepare, const Ours& ours,
             const Peer& peer) {
  Comparison comparison{nanoseconds, function, peerName, {}};
  for (const Labels& script : allLabels()) {
    if (!withASCII && std::string_view(script.name) == "ASCII") continue;
    std::vector<std::u32string> texts;
    for (const std::u32string& label : script.texts) texts.push_back(prepare(label));
    const std::vector<Label> labels = labelsOf(texts);
    for (const Label& label : labels) {
      require(!ours(label, true).empty(), "a label is refused");
      require(ours(label, true) == peer(label, true), "different results");
    }
    const Seconds seconds = measureInTurns(
        [&] {
          for (const Label& label : labels) ours(label, false);
        },
        [&] {
          for (const Label& label : labels) peer(label, false);
        });
    const double each = 1e9 / static_cast<double>(labels.size());
    comparison.samples.push_back({script.name, seconds.ours * each, seconds.peer * each});
  }
  report.add(std::move(comparison));
}

std::u32string unchanged(const std::u32string& label) { return label; }

std::u32string asciiOf(const std::u32string& label) {
  const std::u16string units(label.begin(), label.end());
  XcodeOctet octets[XcodeMaxLabelOctets];
  std::int32_t length = XcodeMaxLabelOctets;
  require(Xcode_ToASCII(units.data(), static_cast<std::int32_t>(units.size()), octets, &length) ==
              XcodeOK,
          "a label has no ASCII form");
  return text(octets, static_cast<std::size_t>(length));
}

const Case toASCII("idn.toascii", [](Report& report) {
  measure(
      report, "Xcode_ToASCII", true, unchanged,
      [](const Label& label, bool shows) {
        XcodeOctet octets[XcodeMaxLabelOctets];
        std::int32_t length = XcodeMaxLabelOctets;
        if (Xcode_ToASCII(label.units.data(), label.count(), octets, &length) != XcodeOK) {
          length = 0;
        }
        consume(octets);
        return shows ? text(octets, static_cast<std::size_t>(length)) : std::u32string();
      },
      [](const Label& label, bool shows) {
        char octets[64] = {};
        idna_to_ascii_4i(label.peerCodePoints.data(), label.peerCodePoints.size(), octets,
                         IDNA_ALLOW_UNASSIGNED | IDNA_USE_STD3_ASCII_RULES);
        consume(octets);
        return shows ? text(octets, std::string_view(octets).size()) : std::u32string();
      });
});

const Case toUnicode("idn.tounicode", [](Report& report) {
  measure(
      report, "Xcode_ToUnicode16", true, asciiOf,
      [](const Label& label, bool shows) {
        XcodeUnit units[XcodeMaxLabelUnits];
        std::int32_t length = XcodeMaxLabelUnits;
        if (Xcode_ToUnicode16(label.units.data(), label.count(), units, &length) != XcodeOK) {
          length = 0;
        }
        consume(units);
        return shows ? text(units, static_cast<std::size_t>(length)) : std::u32string();
      },
      [](const Label& label, bool shows) {
        PeerOutput codePoints;
        std::size_t length = codePoints.size();
        idna_to_unicode_44i(label.peerCodePoints.data(), label.peerCodePoints.size(),
                            codePoints.data(), &length,
                            IDNA_ALLOW_UNASSIGNED | IDNA_USE_STD3_ASCII_RULES);
        consume(codePoints);
        return shows ? text(codePoints.data(), length) : std::u32string();
      });
});

const Case nameprep("idn.nameprep", [](Report& report) {
  measure(
      report, "Xcode_nameprepString32", true, unchanged,
      [](const Label& label, bool shows) {
        Output codePoints;
        auto length = static_cast<std::int32_t>(codePoints.size());
        if (Xcode_nameprepString32(label.codePoints.data(), label.count(), codePoints.data(),
                                   &length, nullptr) != XcodeOK) {
          length = 0;
        }
        consume(codePoints);
        return shows ? text(codePoints.data(), static_cast<std::size_t>(length)) : std::u32string();
      },
      [](const Label& label, bool shows) {
        // It works in place.
        PeerOutput codePoints;
        std::copy(label.peerCodePoints.begin(), label.peerCodePoints.end(), codePoints.begin());
        std::size_t length = label.peerCodePoints.size();
        if (stringprep_4i(codePoints.data(), &length, codePoints.size(), Stringprep_profile_flags{},
                          stringprep_nameprep) != STRINGPREP_OK) {
          length = 0;
        }
        consume(codePoints);
        return shows ? text(codePoints.data(), length) : std::u32string();
      });
});

const Case punycodeEncode("idn.punycode.encode", [](Report& report) {
  measure(
      report, "punycode_encode", false, unchanged,
      [](const Label& label, bool shows) {
        XcodeOctet octets[XcodeMaxLabelOctets];
        std::int32_t length = XcodeMaxLabelOctets;
        if (zeb::punycode_encode(label.count(), label.codePoints.data(), &length, octets) !=
            XcodeOK) {
          length = 0;
        }
        consume(octets);
        return shows ? text(octets, static_cast<std::size_t>(length)) : std::u32string();
      },
      [](const Label& label, bool shows) {
        char octets[XcodeMaxLabelOctets];
        std::size_t length = sizeof octets;
        if (::punycode_encode(label.peerCodePoints.size(), label.peerCodePoints.data(), nullptr,
                              &length, octets) != PUNYCODE_SUCCESS) {
          length = 0;
        }
        consume(octets);
        return shows ? text(octets, length) : std::u32string();
      });
});

const Case punycodeDecode("idn.punycode.decode", [](Report& report) {
  measure(
      report, "punycode_decode", false,
      [](const std::u32string& label) { return asciiOf(label).substr(4); },
      [](const Label& label, bool shows) {
        Output codePoints;
        auto length = static_cast<std::int32_t>(codePoints.size());
        if (zeb::punycode_decode(label.count(), label.octets.data(), &length, codePoints.data()) !=
            XcodeOK) {
          length = 0;
        }
        consume(codePoints);
        return shows ? text(codePoints.data(), static_cast<std::size_t>(length)) : std::u32string();
      },
      [](const Label& label, bool shows) {
        PeerOutput codePoints;
        std::size_t length = codePoints.size();
        if (::punycode_decode(label.octets.size(),
                              reinterpret_cast<const char*>(label.octets.data()), &length,
                              codePoints.data(), nullptr) != PUNYCODE_SUCCESS) {
          length = 0;
        }
        consume(codePoints);
        return shows ? text(codePoints.data(), length) : std::u32string();
      });
});

#else

const Case toASCII("idn.toascii", [](Report& report) { report.skip(peerName); });
const Case toUnicode("idn.tounicode", [](Report& report) { report.skip(peerName); });
const Case nameprep("idn.nameprep", [](Report& report) { report.skip(peerName); });
const Case punycodeEncode("idn.punycode.encode", [](Report& report) { report.skip(peerName); });
const Case punycodeDecode("idn.punycode.decode", [](Report& report) { report.skip(peerName); });

#endif

}  // namespace

}  // namespace zeb::bench
