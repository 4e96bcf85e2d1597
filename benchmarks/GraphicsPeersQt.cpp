#include "GraphicsPeers.h"

#include <QColor>

namespace zeb::bench {

void classifyWithQt(const std::vector<BenchColor>& colors, std::size_t (&counts)[familyCount]) {
  for (const BenchColor& color : colors) {
    float hue, saturation, value;
    QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                     static_cast<float>(color.blue))
        .getHsvF(&hue, &saturation, &value);
    const float degrees = hue * 360;
    const bool isVisible = saturation > 0.15f && value > 0.1f;
    const bool isRedZone = degrees <= 11 || degrees > 351;
    counts[0] += value <= 0.1f;
    counts[1] += saturation <= 0.15f && value > 0.65f;
    counts[2] += saturation <= 0.15f && value > 0.1f && value <= 0.65f;
    counts[3] += isRedZone && saturation > 0.7f && value > 0.1f;
    counts[4] +=
        isVisible && ((degrees > 310 && degrees <= 351) || (isRedZone && saturation <= 0.7f));
    counts[5] += degrees > 11 && degrees <= 45 && saturation > 0.15f && value > 0.75f;
    counts[6] += degrees > 11 && degrees <= 45 && isVisible && value <= 0.75f;
    counts[7] += degrees > 45 && degrees <= 64 && isVisible;
    counts[8] += degrees > 64 && degrees <= 150 && isVisible;
    counts[9] += degrees > 150 && degrees <= 180 && isVisible;
    counts[10] += degrees > 180 && degrees <= 255 && isVisible;
    counts[11] += degrees > 255 && degrees <= 310 && isVisible;
  }
}

}  // namespace zeb::bench
