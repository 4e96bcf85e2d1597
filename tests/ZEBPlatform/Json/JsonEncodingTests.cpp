#include <ZEBPlatform/Json/NSJSONSerialization.h>
#include <gtest/gtest.h>

namespace zeb::test {

struct Form {
  std::size_t unitSize;
  bool bigEndian;
};
constexpr Form forms[] = {{1, false}, {2, false}, {2, true}, {4, false}, {4, true}};

/// The text in UTF-8, or as units of the given size, well-formed or not.
std::string encoded(std::u16string_view text, const Form& form) {
  if (form.unitSize == 1) return NSString(text).utf8();
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t unit = text[i];
    if (form.unitSize == 4 && (unit & 0xFC00) == 0xD800 && (text[i + 1] & 0xFC00) == 0xDC00) {
      unit = 0x10000 + ((unit & 0x3FF) << 10) + (text[++i] & 0x3FFu);
    }
    for (std::size_t index = 0; index < form.unitSize; ++index) {
      const std::size_t place = form.bigEndian ? form.unitSize - 1 - index : index;
      bytes += static_cast<char>(unit >> (8 * place));
    }
  }
  return bytes;
}

Value read(std::string_view bytes, NSError* error) {
  return NSJSONSerialization::JSONObjectWithData(NSData::dataWithBytes(bytes),
                                                 NSJSONReadingFragmentsAllowed, error);
}

TEST(JsonEncoding, EveryFormReadsTheSameWithAndWithoutMark) {
  for (const Form& form : forms) {
    for (const std::u16string mark : {u"", u"\uFEFF"}) {
      SCOPED_TRACE(&form - forms);
      NSError error;
      const std::string whole = encoded(mark + u"[\"\u00E9\u20AC\U0001F600\"]", form);
      EXPECT_EQ(read(whole, &error), NSArray{"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"});
      EXPECT_TRUE(read(encoded(mark + u"7", form), &error) == 7 && error.isNil());
      for (std::size_t length = 0; length < whole.size(); ++length) {
        error = nullptr;
        EXPECT_TRUE(read(whole.substr(0, length), &error).isNil() && error) << length;
      }
      const std::u16string before = mark + u"[\n\"\U0001F600\u00E9\", ";
      EXPECT_TRUE(read(encoded(before + u"x]", form), &error).isNil());
      constexpr auto message = "A value was expected at line 2, column 7 (byte offset %zu).";
      const auto expected = NSString::stringWithFormat(message, encoded(before, form).size());
      EXPECT_EQ(error.localizedDescription(), expected);
    }
  }
}

TEST(JsonEncoding, MalformedUnitsAreReportedAtTheirPlace) {
  for (const std::u16string text : {u"[\"\xD83Dx\"]", u"[\"\xDE00\"]", u"[\"\xD83D\xD83D\"]"}) {
    for (const Form& form : {forms[1], forms[2], forms[3], forms[4]}) {
      NSError error;
      EXPECT_TRUE(read(encoded(text, form), &error).isNil());
      const auto place =
          "line 1, column 3 (byte offset " + std::to_string(2 * form.unitSize) + ").";
      EXPECT_EQ(error.what(), "Malformed UTF-16 or UTF-32 at " + place);
    }
  }
  NSError error;
  EXPECT_TRUE(read(std::string_view("[\0\0\0\0\0\x11\0", 8), &error).isNil()) << "beyond U+10FFFF";
  EXPECT_STREQ(error.what(), "Malformed UTF-16 or UTF-32 at line 1, column 2 (byte offset 4).");
}

}  // namespace zeb::test
