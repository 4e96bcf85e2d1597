#include <ZEBUtilities/Graphics/ZEBColor.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <string>

namespace zeb::test {

using Triple = std::array<double, 3>;

Triple hsv(const Triple& rgb) {
  Triple result;
  ZEBColorConvertRGBToHSV(result[0], result[1], result[2], rgb[0], rgb[1], rgb[2]);
  return result;
}

Triple rgb(const Triple& hsv) {
  Triple result;
  ZEBColorConvertHSVToRGB(result[0], result[1], result[2], hsv[0], hsv[1], hsv[2]);
  return result;
}

void expectNear(const Triple& actual, const Triple& expected) {
  for (std::size_t i = 0; i < 3; ++i) EXPECT_NEAR(actual[i], expected[i], 1e-12);
}

TEST(ZEBColor, PacksComponentsAndMasksOnlySome) {
  EXPECT_EQ(ZEBCreateARGBColor(255, 1, 2, 3), 0xFF010203u);
  EXPECT_EQ(ZEBCreateARGBColor(0x1FF, 0x101, 0x102, 0x10003), 0xFF010203u | 0x10000u);
  EXPECT_EQ(ZEBCreateHSVColor(0x12345, 0x1FF, 0x80), 0x2345FF80u);
}

TEST(ZEBColor, ConvertsInBothDirections) {
  const std::pair<Triple, Triple> rows[] = {{{0, 0, 0}, {-1, 0, 0}},
                                            {{0.5, 0.5, 0.5}, {0, 0, 0.5}},
                                            {{1, 0, 0.5}, {330.0 / 360, 1, 1}},
                                            {{0.2, 0.4, 0.2}, {1.0 / 3, 0.5, 0.4}},
                                            {{0, 0.25, 1}, {225.0 / 360, 1, 1}}};
  for (const auto& [color, expected] : rows) expectNear(hsv(color), expected);
  EXPECT_FALSE(std::signbit(hsv({-0.0, 0.0, -0.0})[2]));
  EXPECT_EQ(hsv({NAN, 0.5, 0.25})[2], 0.5);

  expectNear(rgb({200, 0, 0.3}), {0.3, 0.3, 0.3});
  // A hue of 360 or beyond, and one that is no number, is read like the last sixth.
  for (const double outside : {360.0, 1e300, -5.0, double{NAN}}) {
    const Triple color = rgb({outside, 1, 0.5});
    EXPECT_TRUE(color[0] == 0.5 && color[1] == 0) << outside;
  }
  for (double hue = 0; hue < 360; hue += 7.5)
    expectNear(hsv(rgb({hue, 0.6, 0.8})), {hue / 360, 0.6, 0.8});
}

TEST(ZEBColor, SortsIntoFamiliesWithTheEdgesOnTheirSides) {
  const char* const families[] = {" black",  " white",  " gray",    " red",   " pink",
                                  " orange", " brown",  " yellow",  " green", " cyan",
                                  " blue",   " purple", " colorful"};
  const std::tuple<double, double, double, const char*> rows[] = {
      {-360, 0, 0, " black"},
      {0, 0.9, 0.1, " black"},
      {200, 0.15, 0.66, " white"},
      {200, 0.15, 0.65, " gray"},
      {200, 0.15, 0.1, " black"},
      {11, 0.71, 0.5, " red colorful"},
      {11, 0.7, 0.5, " pink colorful"},
      {11.001, 0.71, 0.76, " orange colorful"},
      {45, 0.2, 0.76, " orange colorful"},
      {45, 0.2, 0.75, " brown colorful"},
      {45.001, 0.2, 0.2, " yellow colorful"},
      {64, 0.2, 0.2, " yellow colorful"},
      {64.001, 0.2, 0.2, " green colorful"},
      {150, 0.2, 0.2, " green colorful"},
      {180, 0.2, 0.2, " cyan colorful"},
      {255, 0.2, 0.2, " blue colorful"},
      {310, 0.2, 0.2, " purple colorful"},
      {351, 0.9, 0.5, " pink colorful"},
      {351.001, 0.9, 0.5, " red colorful"},
      {351.001, 0.5, 0.5, " pink colorful"},
      {NAN, 0.5, 0.5, " colorful"},
      {100, NAN, 0.5, ""},
      {100, 0.5, NAN, ""}};
  for (const auto& [degrees, s, v, expected] : rows) {
    const double h = degrees / 360;
    const bool isMember[] = {
        ZEBColorIsBlack(v),         ZEBColorIsWhite(s, v),     ZEBColorIsGray(s, v),
        ZEBColorIsRed(h, s, v),     ZEBColorIsPink(h, s, v),   ZEBColorIsOrange(h, s, v),
        ZEBColorIsBrown(h, s, v),   ZEBColorIsYellow(h, s, v), ZEBColorIsGreen(h, s, v),
        ZEBColorIsCyan(h, s, v),    ZEBColorIsBlue(h, s, v),   ZEBColorIsPurple(h, s, v),
        ZEBColorIsColorful(h, s, v)};
    std::string names;
    for (std::size_t i = 0; i < std::size(isMember); ++i) names += isMember[i] ? families[i] : "";
    EXPECT_EQ(names, expected) << degrees << ", " << s << ", " << v;
  }
}

}  // namespace zeb::test
