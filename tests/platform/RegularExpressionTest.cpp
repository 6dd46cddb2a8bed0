#include "quenwick/platform/RegularExpression.h"

#include <gtest/gtest.h>

#include <thread>

namespace quenwick::platform {
namespace {

using Ranges = std::vector<std::string>;

Ranges ranges(std::string_view pattern, std::string_view text) {
  return RegularExpression::compile(pattern).rangesOfMatches(text);
}

TEST(RegularExpression, RangesAreTheMatchAndItsGroupsForEveryMatch) {
  EXPECT_EQ(ranges(R"(gom?\/([a-f0-9]+))", "/go/1f/gom/2e"),
            (Ranges{"go/1f", "1f", "gom/2e", "2e"}));
  EXPECT_EQ(ranges("(a)|(b)", "ab"), (Ranges{"a", "a", "b", "b"})) << "absent groups are skipped";
  EXPECT_EQ(ranges("x*", "üxx"), (Ranges{"", "xx", ""})) << "empty matches move on";
  EXPECT_EQ(ranges("(?=(ab))", "abab"), (Ranges{"", "ab", "", "ab"}));
  EXPECT_EQ(ranges("^a", "aa"), (Ranges{"a"}));
}

TEST(RegularExpression, BadPatternsAreAnErrorWithAText) {
  for (auto pattern : {"(", "[", "a{2,1}", "(?<n>"}) {
    try {
      RegularExpression::compile(pattern);
      ADD_FAILURE() << pattern;
    } catch (const PlatformError& error) {
      EXPECT_FALSE(error.localizedDescription().empty());
    }
  }
}

// Without a bound on the work, each of these would take hours.
TEST(RegularExpression, TextsMadeToDefeatBacktrackingFindNothing) {
  EXPECT_FALSE(RegularExpression::compile("(a+)+$").isFound(std::string(10'000, 'a') + "b"));
  std::string link;
  while (link.size() < 1'000'000) link += "/p/rp/";
  EXPECT_FALSE(RegularExpression::compile("/p/rpm?/.+/url").isFound(link));
  EXPECT_TRUE(ranges("(x+x+)+y", std::string(10'000, 'x')).empty());
}

/// The last code of a host on a thread: what it destroys there after all that the library keeps.
struct LastOfThread {
  bool* isFound;
  ~LastOfThread() { *isFound = RegularExpression::compile("a").isFound("a"); }
};

TEST(RegularExpression, SearchesUntilTheVeryEndOfAThread) {
  bool isFound = false;
  std::thread([&isFound] {
    static thread_local LastOfThread last{&isFound};
    EXPECT_FALSE(RegularExpression::compile("a").isFound(last.isFound ? "b" : ""));
  }).join();
  EXPECT_TRUE(isFound);
}

TEST(RegularExpression, BytesThatAreNoTextAreSearchedAllTheSame) {
  EXPECT_TRUE(RegularExpression::compile("/p/gom?/").isFound("\xff\xfe/p/gom/\xff"));
}

}  // namespace
}  // namespace quenwick::platform
