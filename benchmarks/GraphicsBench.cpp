#include <ZEBUtilities/Graphics/ZEBColor.h>

#include <cmath>
#include <random>

#include "Bench.h"
#include "GraphicsPeers.h"

namespace zeb::bench {

namespace {

constexpr const char* peerName = "QColor in HSV and comparisons";

#if ZEB_BENCH_HAVE_QT

constexpr std::size_t colorCount = 1'000'000;

void classify(const std::vector<BenchColor>& colors, std::size_t (&counts)[familyCount]) {
  for (const BenchColor& color : colors) {
    double hue, saturation, value;
    ZEBColorConvertRGBToHSV(hue, saturation, value, color.red, color.green, color.blue);
    counts[0] += ZEBColorIsBlack(value);
    counts[1] += ZEBColorIsWhite(saturation, value);
    counts[2] += ZEBColorIsGray(saturation, value);
    counts[3] += ZEBColorIsRed(hue, saturation, value);
    counts[4] += ZEBColorIsPink(hue, saturation, value);
    counts[5] += ZEBColorIsOrange(hue, saturation, value);
    counts[6] += ZEBColorIsBrown(hue, saturation, value);
    counts[7] += ZEBColorIsYellow(hue, saturation, value);
    counts[8] += ZEBColorIsGreen(hue, saturation, value);
    counts[9] += ZEBColorIsCyan(hue, saturation, value);
    counts[10] += ZEBColorIsBlue(hue, saturation, value);
    counts[11] += ZEBColorIsPurple(hue, saturation, value);
  }
}

/// Converts colours to HSV and tests each for all families.
void measureClassifying(Report& report) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> component(0, 1);
  std::vector<BenchColor> colors(colorCount);
  for (BenchColor& color : colors) {
    color = {component(random), component(random), component(random)};
  }
  std::size_t ours[familyCount]{};
  std::size_t theirs[familyCount]{};
  classify(colors, ours);
  classifyWithQt(colors, theirs);
  for (std::size_t family = 0; family < familyCount; ++family) {
    // QColor rounds to 16 bits, so that colours at the edges may change their family.
    const double difference =
        std::abs(static_cast<double>(ours[family]) - static_cast<double>(theirs[family]));
    require(difference <= 0.001 * colorCount, "the two sides classify differently");
  }
  const auto run = [&](auto side) {
    std::size_t counts[familyCount]{};
    side(colors, counts);
    consume(counts);
  };
  report.add(nanosecondsEach("ZEBColor", peerName,
                             measureInTurns([&] { run(classify); }, [&] { run(classifyWithQt); }),
                             colorCount));
}

#else

void measureClassifying(Report& report) { report.skip(peerName); }

#endif

const Case classifying("color.classify", measureClassifying);

}  // namespace

}  // namespace zeb::bench
