#include <ZEBPlatform/Foundation/NSURL.h>
#include <gtest/gtest.h>

namespace zeb::test {

TEST(NSURL, IsItsText) {
  for (const char* text : {"http://user@host:80/path;p?query=a+b#frag", "../relative", "a%20b",
                           "http://[::1]/", "mailto:\xC3\xA9@host"}) {
    const NSURL url = NSURL::URLWithString(text);
    const NSURL twin = NSURL::URLWithString(text);
    EXPECT_TRUE(url.absoluteString() == text && url == twin && url.hash() == twin.hash()) << text;
    EXPECT_FALSE(url.isEqual(text) || url.isEqual(NSURL::URLWithString("http://other/"))) << text;
  }
  for (const char* text : {"", "a b", "a\tb", "a\nb", "\x01", "\x7F", "a\"", "<a", "a>", "a\\b",
                           "a^", "a`", "{a", "a|b", "a}"}) {
    EXPECT_TRUE(NSURL::URLWithString(text).isNil()) << text;
  }
}

}  // namespace zeb::test
