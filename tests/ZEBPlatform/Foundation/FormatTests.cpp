#include <ZEBPlatform/Foundation/NSNumber.h>

#include "Support/Support.h"

namespace zeb::test {

struct Named : NSObject {
  std::string description() const override { return "an object"; }
};
enum Colour : std::uint16_t { Red = 7 };

constexpr int most = std::numeric_limits<int>::max();
constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();

template <class... Arguments>
std::string format(std::string_view text, const Arguments&... arguments) {
  return NSString::stringWithFormat(text, arguments...).utf8();
}

TEST(Format, Directives) {
  const Ref<Named> object = makeRef<Named>();
  // clang-format off
  const std::pair<std::string, std::string> cases[] = {
      {format("plain 100%%"), "plain 100%"}, {format("%d %i %u", -1, 2, 3u), "-1 2 3"},
      {format("%5d|%-5d|%05d|%+d|% d", 42, 42, 42, 42, 42), "   42|42   |00042|+42| 42"},
      {format("%.3d|%8.3d", 7, 7), "007|     007"}, {format("%x", -1), "ffffffff"},
      {format("%x %X %#x %o %#o", 255, 255, 255, 8, 8), "ff FF 0xff 10 010"},
      {format("%hhx %hx %lld", std::int8_t{-1}, short{-1}, lowest), "ff ffff -9223372036854775808"},
      {format("%llu %qd %zd %tu %jd", ~0ull, 1L, 2UL, 3UL, 4L), "18446744073709551615 1 2 3 4"},
      {format("%f %.2f|%6.1f|%-6.1f|", 1.5, 2.345, 3.25, 3.25), "1.500000 2.35|   3.2|3.2   |"},
      {format("%e %G %a", 12345.0, 1e-10, 1.0), "1.234500e+04 1E-10 0x1p+0"},
      {format("%f %d %d", 1.5f, true, Red), "1.500000 1 7"}, {format("%.2s", "a\xC3\xA9"), "a"},
      {format("%s %S", "c text", std::string("string")), "c text string"},
      {format("%s", static_cast<const char*>(nullptr)), "(null)"},
      {format("%6s|%-6s|%.2s", "ab", "ab", "abcdef"), "    ab|ab    |ab"},
      {format("%c%C%c", 'a', u'\u20AC', 66), "a\xE2\x82\xAC\x42"},
      {format("%p", reinterpret_cast<void*>(0xBEEF)), "0xbeef"},
      {format("%@ %@ %@", "text"_ns, NSNumber(1.5), Value()), "text 1.5 (null)"},
      {format("%@ %@ %@", object, *object, Ref<Named>()), "an object an object (null)"},
      {format("%@ %@ %@", 5, "c text", 0.1), "5 c text 0.1"}, {format("%*d|", -4, 1), "1   |"},
      {format("%*d|%-*d|%.*f", 5, 1, 5, 1, 2, 1.0), "    1|1    |1.00"},
      // Nothing is read that was not given.
      {format("%d %@ %s"), "%d %@ %s"}, {format("%d %d", 1), "1 %d"}, {format("%n %y", 1), "%n %y"},
      {format("%"), "%"}, {format("%-+ #0"), "%-+ #0"}, {format("%*d", 5), "%*d"},
      {format("%2$@ %1$@", "a", "b"), "b a"}, {format("%3$@ %0$@", "a"), "%3$@ %0$@"},
      {format("%99999999999999999999$@", "a"), "%99999999999999999999$@"},
      {format("%d %x", "text", 1.5), "text 1.5"}, {format("%s %s", 42, "text"_ns), "42 text"},
      {format("%d %f", 1L << 40, 2), "1099511627776 2.000000"},
      {format("%@ %d", 1UL << 63, 1UL << 63), "9223372036854775808 9223372036854775808"},
      {format(std::string(100'000, '%')), std::string(50'000, '%')},
      {format("%" + std::string(10'000, '-') + "d", 1), "1"}};
  // clang-format on
  for (const auto& [text, expected] : cases) EXPECT_EQ(text, expected);
}

TEST(Format, CutsHugeFields) {
  for (const std::string& wide :
       {format("%*d", most, 1), format("%2147483647d", 1), format("%99999999999999999999s", "a"),
        format("%-*@", lowest, "a"_ns), format("%.*f", most, 1.0), format("%.99999999999d", 1)}) {
    EXPECT_TRUE(wide.size() >= 4096 && wide.size() <= 4200) << wide.size();
  }
}

}  // namespace zeb::test
