#include <ZEBUtilities/Graphics/ZEBColor.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace zeb::test {

namespace {

constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

struct Triple {
  double first, second, third;
};

Triple hsv(Triple rgb) {
  Triple result{};
  ZEBColorConvertRGBToHSV(result.first, result.second, result.third, rgb.first, rgb.second,
                          rgb.third);
  return result;
}

Triple rgb(Triple hsv) {
  Triple result{};
  ZEBColorConvertHSVToRGB(result.first, result.second, result.third, hsv.first, hsv.second,
                          hsv.third);
  return result;
}

void expectNear(const Triple& actual, const Triple& expected) {
  EXPECT_NEAR(actual.first, expected.first, 1e-12);
  EXPECT_NEAR(actual.second, expected.second, 1e-12);
  EXPECT_NEAR(actual.third, expected.third, 1e-12);
}

/// The names of all families of a colour whose hue is in degrees.
std::string families(double degrees, double s, double v) {
  const double h = degrees / 360;
  std::string names;
  const auto add = [&](bool isMember, const char* name) {
    if (isMember) names += (names.empty() ? "" : " ") + std::string(name);
  };
  add(ZEBColorIsBlack(v), "black");
  add(ZEBColorIsWhite(s, v), "white");
  add(ZEBColorIsGray(s, v), "gray");
  add(ZEBColorIsRed(h, s, v), "red");
  add(ZEBColorIsPink(h, s, v), "pink");
  add(ZEBColorIsOrange(h, s, v), "orange");
  add(ZEBColorIsBrown(h, s, v), "brown");
  add(ZEBColorIsYellow(h, s, v), "yellow");
  add(ZEBColorIsGreen(h, s, v), "green");
  add(ZEBColorIsCyan(h, s, v), "cyan");
  add(ZEBColorIsBlue(h, s, v), "blue");
  add(ZEBColorIsPurple(h, s, v), "purple");
  add(ZEBColorIsColorful(h, s, v), "colorful");
  return names;
}

}  // namespace

TEST(ZEBColor, PacksComponentsAndMasksOnlySome) {
  EXPECT_EQ(ZEBCreateARGBColor(255, 1, 2, 3), 0xFF010203u);
  EXPECT_EQ(ZEBCreateARGBColor(0x1FF, 0x101, 0x102, 0x10003), 0xFF010203u | 0x10000u);
  EXPECT_EQ(ZEBCreateHSVColor(0x12345, 0x1FF, 0x80), 0x2345FF80u);
}

TEST(ZEBColor, ConvertsInBothDirections) {
  expectNear(hsv({0, 0, 0}), {-1, 0, 0});
  expectNear(hsv({0.5, 0.5, 0.5}), {0, 0, 0.5});
  expectNear(hsv({1, 0, 0.5}), {330.0 / 360, 1, 1});
  expectNear(hsv({0.2, 0.4, 0.2}), {1.0 / 3, 0.5, 0.4});
  expectNear(hsv({0, 0.25, 1}), {225.0 / 360, 1, 1});
  EXPECT_FALSE(std::signbit(hsv({-0.0, 0.0, -0.0}).third));
  EXPECT_EQ(hsv({notANumber, 0.5, 0.25}).third, 0.5);

  expectNear(rgb({200, 0, 0.3}), {0.3, 0.3, 0.3});
  // A hue of 360 or beyond, and one that is no number, is read like the last sixth.
  for (const double outside : {360.0, 1e300, -5.0, notANumber}) {
    const Triple color = rgb({outside, 1, 0.5});
    EXPECT_EQ(color.first, 0.5) << outside;
    EXPECT_EQ(color.second, 0) << outside;
  }
  for (double hue = 0; hue < 360; hue += 7.5) {
    const Triple there = hsv(rgb({hue, 0.6, 0.8}));
    expectNear(there, {hue / 360, 0.6, 0.8});
  }
}

TEST(ZEBColor, SortsIntoFamiliesWithTheEdgesOnTheirSides) {
  struct Row {
    double degrees, saturation, value;
    const char* families;
  };
  const Row rows[] = {
      {-360, 0, 0, "black"},
      {0, 0.9, 0.1, "black"},
      {200, 0.15, 0.66, "white"},
      {200, 0.15, 0.65, "gray"},
      {200, 0.15, 0.1, "black"},
      {11, 0.71, 0.5, "red colorful"},
      {11, 0.7, 0.5, "pink colorful"},
      {11.001, 0.71, 0.76, "orange colorful"},
      {45, 0.2, 0.76, "orange colorful"},
      {45, 0.2, 0.75, "brown colorful"},
      {45.001, 0.2, 0.2, "yellow colorful"},
      {64, 0.2, 0.2, "yellow colorful"},
      {64.001, 0.2, 0.2, "green colorful"},
      {150, 0.2, 0.2, "green colorful"},
      {180, 0.2, 0.2, "cyan colorful"},
      {255, 0.2, 0.2, "blue colorful"},
      {310, 0.2, 0.2, "purple colorful"},
      {351, 0.9, 0.5, "pink colorful"},
      {351.001, 0.9, 0.5, "red colorful"},
      {351.001, 0.5, 0.5, "pink colorful"},
      {notANumber, 0.5, 0.5, "colorful"},
      {100, notANumber, 0.5, ""},
      {100, 0.5, notANumber, ""},
  };
  for (const auto& [degrees, saturation, value, expected] : rows) {
    EXPECT_EQ(families(degrees, saturation, value), expected)
        << degrees << ", " << saturation << ", " << value;
  }
}

}  // namespace zeb::test
