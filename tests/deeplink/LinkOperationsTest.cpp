#include "quenwick/deeplink/LinkOperations.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quenwick {
namespace {

platform::URL url(const std::string& text) { return platform::URL::parse(text).value(); }

TEST(LinkOperations, EveryLinkIsGivenTheSchemeHTTPS) {
  for (auto [link, secure] :
       {std::pair("http://h:8080/p/rp/a%2f/url?x#f", "https://h:8080/p/rp/a%2f/url?x#f"),
        {"https://h/", "https://h/"},
        {"//h/p", "https://h/p"},
        {"h/p/go/1f", "https:h/p/go/1f"},
        {"shopapp://x", "https://x"}}) {
    EXPECT_EQ(ensureHTTPS(url(link)).absoluteString(), secure);
  }
}

TEST(LinkOperations, OnlyTheFirstItemThatSaysOneHaltsRedirects) {
  for (auto [query, halts] : {std::pair("qw_hr=1", true),
                              {"a=b&qw_hr=1&qw_hr=0", true},
                              {"qw_hr=%31", true},
                              {"qw_hr=0&qw_hr=1", false},
                              {"qw_hr=true", false},
                              {"qw_hr", false},
                              {"qw_hr=", false},
                              {"QW_HR=1", false},
                              {"x=1", false}}) {
    EXPECT_EQ(shouldHaltRedirects(url(std::string("https://h/?") + query)), halts) << query;
  }
  EXPECT_FALSE(shouldHaltRedirects(url("https://h/#qw_hr=1")));
}

TEST(LinkOperations, TheIdentifierIsTheFirstItemsValue) {
  using Text = std::optional<std::string>;
  for (auto [query, value] : {std::pair("qw_u=a&qw_u=b", Text("a")),
                              {"qw_u=", Text("")},
                              {"qw_u&qw_u=b", Text()},
                              {"qw_U=a", Text()},
                              {"qw_u=a%20b%26+", Text("a b&+")}}) {
    EXPECT_EQ(qwuValue(url(std::string("https://h/?") + query)), value) << query;
  }
}

TEST(LinkOperations, TheRulesKeyIsTheLowerCaseHexadecimalSegment) {
  using Text = std::optional<std::string>;
  for (auto [path, key] : {std::pair("/p/rp/deadbeef/url", Text("deadbeef")),
                           {"/p/rpm/1f/url", Text("1f")},
                           {"/p/rp/DEADBEEF/url", Text()},
                           {"/p/rp/xyz/url", Text()},
                           {"/p/go/00ff", Text("00ff")},
                           {"/p/gom/1fX", Text("1f")},
                           {"/p/go/", Text()},
                           {"/go/1/rp/2/url", Text("2")},
                           {"/rp/1/url/rpm/2/url", Text("2")},
                           {"/cargo/ab", Text("ab")},
                           {"", Text()}}) {
    EXPECT_EQ(findRPKey(path), key) << path;
  }
}

TEST(LinkOperations, ABrokenPatternMatchesNothingAndSaysSo) {
  testing::internal::CaptureStdout();
  EXPECT_TRUE(matches("text", "(").empty());
  fflush(stdout);
  auto line = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(line.starts_with("invalid regex: ")) << line;
  EXPECT_GT(line.size(), 16U);
  EXPECT_EQ(std::ranges::count(line, '\n'), 1);
}

}  // namespace
}  // namespace quenwick
