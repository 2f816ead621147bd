#include "platform/foundation/URLReference.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

void expectParts(std::string_view text, std::string_view scheme, std::string_view authority,
                 std::string_view path) {
  const auto url = URLReference::parse(text);
  ASSERT_TRUE(url.has_value()) << text;
  EXPECT_EQ(url->scheme, scheme) << text;
  EXPECT_EQ(url->authority, authority) << text;
  EXPECT_EQ(url->path, path) << text;
}

TEST(URLReference, hasSchemeAuthorityAndPath) {
  expectParts("file:///a%20b/", "file", "", "/a%20b/");
  expectParts("https://me:x@example.com:80/a/b", "https", "me:x@example.com:80", "/a/b");
  expectParts("mailto:me@example.com", "mailto", "", "me@example.com");
  expectParts("x-a+b.1:", "x-a+b.1", "", "");
}

TEST(URLReference, mayBeRelative) {
  expectParts("Exports", "", "", "Exports");
  expectParts("/Users/me", "", "", "/Users/me");
  expectParts("//server/share", "", "server", "/share");
  expectParts("./a:b", "", "", "./a:b");
}

TEST(URLReference, endsItsPathAtTheQueryOrTheFragment) {
  expectParts("http://h?a=/b?c#d/?e", "http", "h", "");
  expectParts("file:///x#a:b@c", "file", "", "/x");
  expectParts("?a:b", "", "", "");
}

TEST(URLReference, mayNameItsHostByAnIPv6AddressInBrackets) {
  expectParts("http://[::1]:8080/x", "http", "[::1]:8080", "/x");
  expectParts("http://me@[2001:DB8::7]/", "http", "me@[2001:DB8::7]", "/");
  expectParts("http://[::ffff:192.0.2.1]", "http", "[::ffff:192.0.2.1]", "");
  expectParts("http://[fe80::1%25eth0]/x", "http", "[fe80::1%25eth0]", "/x");
}

TEST(URLReference, isNothingWithANULInItsHost) {
  EXPECT_FALSE(URLReference::parse(std::string_view("http://[::1\0zz]/", 16)));
}

TEST(URLReference, isNothingWhereTheGrammarIsBroken) {
  for (const char* text : {"",
                           "not a URL",
                           "a\tb",
                           "a\x7f",
                           "été",
                           "file:///\xFF",
                           "a\"b",
                           "<a>",
                           "a\\b",
                           "a^b",
                           "a`b",
                           "{a}",
                           "a|b",
                           "a#b#c",
                           "%",
                           "a%2",
                           "%zz",
                           "%2g",
                           "%-1",
                           ":a",
                           "1:a",
                           "a_b:c",
                           "é:a",
                           "http://h:80a/",
                           "http://a@b@c/",
                           "http://[::1",
                           "http://::1]/",
                           "http://[]/",
                           "http://[bad]/",
                           "http://[::1]x/",
                           "http://[::1%25]]/",
                           "http://[::1%zz]/",
                           "http://a[::1]/",
                           "file:///[::1]",
                           "http://h/?[a]"}) {
    EXPECT_FALSE(URLReference::parse(text).has_value()) << text;
  }
  EXPECT_FALSE(URLReference::parse(std::string_view("a\0b", 3)).has_value());
}

TEST(PercentEncoding, leavesWhatAPathMayHold) {
  EXPECT_EQ(percentEncoded("/A-z_0.9~!$&'()*+,;=:@"), "/A-z_0.9~!$&'()*+,;=:@");
  EXPECT_EQ(percentEncoded("/a b%é#?[]"), "/a%20b%25%C3%A9%23%3F%5B%5D");
}

TEST(PercentEncoding, isUndone) {
  EXPECT_EQ(percentDecoded("a%20b%25%c3%A9%FF"), "a b%é\xFF");
  EXPECT_EQ(percentDecoded("%00"), std::string(1, '\0'));
  EXPECT_EQ(percentDecoded(""), "");
}

}  // namespace
}  // namespace orvane
