#pragma once

#include <cmath>
#include <cstdint>

/// Colours as packed integers, in RGB and in HSV, and their sorting into named families, for
/// example to choose a tint that goes with an image. All functions are pure and may be called on
/// any thread; they are inline for the sake of loops over many colours.
namespace zeb {

/// A colour with alpha in the bits 24 to 31, red in 16 to 23, green in 8 to 15 and blue in 0 to 7.
/// Red and green are cut to eight bits. Alpha and blue deliberately are not: a larger alpha loses
/// its upper bits, and a larger blue spills into the other components.
constexpr std::uint32_t ZEBCreateARGBColor(std::uint32_t alpha, std::uint32_t red,
                                           std::uint32_t green, std::uint32_t blue) noexcept {
  return alpha << 24 | (red & 0xFF) << 16 | (green & 0xFF) << 8 | blue;
}

/// A colour with its hue from bit 16 on, saturation in the bits 8 to 15 and value in 0 to 7.
/// Deliberately only the saturation is cut to eight bits.
constexpr std::uint32_t ZEBCreateHSVColor(std::uint32_t hue, std::uint32_t saturation,
                                          std::uint32_t value) noexcept {
  return hue << 16 | (saturation & 0xFF) << 8 | value;
}

namespace detail {

inline constexpr double degreesPerTurn = 360;

/// As `std::fmax`, and of two zeros the positive one.
inline double largerComponent(double left, double right) noexcept {
  return left == 0 && right == 0 ? left + right : std::fmax(left, right);
}

}  // namespace detail

/// Writes hue, saturation and value of a colour whose components are between 0 and 1. The hue is a
/// fraction of a turn in [0, 1), or -1 if all components are 0; only rounding can make it 1.
/// Saturation and value are between 0 and 1. A component that is not a number counts for the value
/// only if no other one is a number; hue and saturation may then be no numbers, either.
///
/// The hue's unit deliberately differs from the one that `ZEBColorConvertHSVToRGB` takes: multiply
/// it by 360 for the way back.
inline void ZEBColorConvertRGBToHSV(double& hue, double& saturation, double& value, double red,
                                    double green, double blue) noexcept {
  double largest = red > green ? red : green;
  largest = largest > blue ? largest : blue;
  double smallest = red < green ? red : green;
  smallest = smallest < blue ? smallest : blue;
  // These comparisons need one instruction each, but zeros and missing numbers need more care.
  if (largest == 0 || std::isnan(red + green + blue)) [[unlikely]] {
    largest = detail::largerComponent(detail::largerComponent(red, green), blue);
    smallest = std::fmin(std::fmin(red, green), blue);
  }
  value = largest;
  if (largest == 0) {
    saturation = 0;
    hue = -1;
    return;
  }
  const double delta = largest - smallest;
  saturation = delta / largest;
  double degrees;
  if (delta == 0) {
    degrees = 0;
  } else if (largest == red) {
    degrees = (green - blue) / delta * 60;
    if (degrees < 0) degrees += detail::degreesPerTurn;
  } else if (largest == green) {
    degrees = (2 + (blue - red) / delta) * 60;
  } else {
    degrees = (4 + (red - green) / delta) * 60;
  }
  hue = degrees * 0.002777777777777778;
}

/// Writes the components of a colour whose hue is in degrees, in [0, 360), and whose saturation and
/// value are between 0 and 1. A hue outside of the circle, 360 included, is read like one of its
/// last sixth.
inline void ZEBColorConvertHSVToRGB(double& red, double& green, double& blue, double hue,
                                    double saturation, double value) noexcept {
  const auto write = [&](double newRed, double newGreen, double newBlue) {
    red = newRed;
    green = newGreen;
    blue = newBlue;
  };
  if (saturation == 0) return write(value, value, value);
  const double sixths = hue * 0.016666666666666666;
  const double sector = std::floor(sixths);
  const double fraction = sixths - sector;
  // Each is value × (1 - …), rounded once.
  const double low = std::fma(-saturation, value, value);
  const double falling = std::fma(-(fraction * saturation), value, value);
  const double rising = std::fma(-((1 - fraction) * saturation), value, value);
  // Compared as numbers: a huge hue or one that is not a number has no integer.
  if (sector == 0) return write(value, rising, low);
  if (sector == 1) return write(falling, value, low);
  if (sector == 2) return write(low, value, rising);
  if (sector == 3) return write(low, falling, value);
  if (sector == 4) return write(rising, low, value);
  write(value, low, falling);
}

// The families. Hue, saturation and value are as `ZEBColorConvertRGBToHSV` writes them. Families
// are deliberately no partition: a colour may belong to none of them and, at the edges, to several.
// Black is in no family that takes a hue, because these need a value above 0.1. A component that is
// not a number passes no test that asks for more than a threshold.

namespace detail {

inline constexpr double minValueOfHue = 0.1;        ///< exclusive; up to it a colour is black
inline constexpr double minSaturationOfHue = 0.15;  ///< exclusive; up to it white or gray
inline constexpr double minSaturationOfRed = 0.7;   ///< exclusive; up to it pink
inline constexpr double minValueOfWhite = 0.65;     ///< exclusive; up to it gray
inline constexpr double minValueOfOrange = 0.75;    ///< exclusive; up to it brown

inline bool isVisibleHue(double saturation, double value) noexcept {
  return saturation > minSaturationOfHue && value > minValueOfHue;
}

/// Whether the hue is in (low, high], in degrees.
inline bool isHueBetween(double hue, double low, double high) noexcept {
  const double degrees = hue * degreesPerTurn;
  return degrees > low && degrees <= high;
}

inline bool isHueOfRed(double hue) noexcept {
  const double degrees = hue * degreesPerTurn;
  return degrees <= 11 || degrees > 351;
}

}  // namespace detail

inline bool ZEBColorIsBlack(double value) noexcept { return value <= detail::minValueOfHue; }

inline bool ZEBColorIsWhite(double saturation, double value) noexcept {
  return saturation <= detail::minSaturationOfHue && value > detail::minValueOfWhite;
}

inline bool ZEBColorIsGray(double saturation, double value) noexcept {
  return saturation <= detail::minSaturationOfHue && value > detail::minValueOfHue &&
         value <= detail::minValueOfWhite;
}

inline bool ZEBColorIsRed(double hue, double saturation, double value) noexcept {
  return detail::isHueOfRed(hue) && saturation > detail::minSaturationOfRed &&
         value > detail::minValueOfHue;
}

/// A weakly saturated red is pink, too.
inline bool ZEBColorIsPink(double hue, double saturation, double value) noexcept {
  return detail::isVisibleHue(saturation, value) &&
         (detail::isHueBetween(hue, 310, 351) ||
          (detail::isHueOfRed(hue) && saturation <= detail::minSaturationOfRed));
}

inline bool ZEBColorIsOrange(double hue, double saturation, double value) noexcept {
  return detail::isHueBetween(hue, 11, 45) && saturation > detail::minSaturationOfHue &&
         value > detail::minValueOfOrange;
}

inline bool ZEBColorIsBrown(double hue, double saturation, double value) noexcept {
  return detail::isHueBetween(hue, 11, 45) && detail::isVisibleHue(saturation, value) &&
         value <= detail::minValueOfOrange;
}

inline bool ZEBColorIsYellow(double hue, double saturation, double value) noexcept {
  return detail::isHueBetween(hue, 45, 64) && detail::isVisibleHue(saturation, value);
}

inline bool ZEBColorIsGreen(double hue, double saturation, double value) noexcept {
  return detail::isHueBetween(hue, 64, 150) && detail::isVisibleHue(saturation, value);
}

inline bool ZEBColorIsCyan(double hue, double saturation, double value) noexcept {
  return detail::isHueBetween(hue, 150, 180) && detail::isVisibleHue(saturation, value);
}

inline bool ZEBColorIsBlue(double hue, double saturation, double value) noexcept {
  return detail::isHueBetween(hue, 180, 255) && detail::isVisibleHue(saturation, value);
}

inline bool ZEBColorIsPurple(double hue, double saturation, double value) noexcept {
  return detail::isHueBetween(hue, 255, 310) && detail::isVisibleHue(saturation, value);
}

/// Whether the colour is neither black, nor white, nor gray. The hue is not read.
inline bool ZEBColorIsColorful(double, double saturation, double value) noexcept {
  return value > detail::minValueOfHue &&
         !(saturation <= detail::minSaturationOfHue && value > detail::minValueOfWhite) &&
         (saturation > detail::minSaturationOfHue || value > detail::minValueOfWhite);
}

}  // namespace zeb
