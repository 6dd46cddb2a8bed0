#include <gtest/gtest.h>

#include "quenwick/platform/JSONSerialization.h"
#include "tests/support/Program.h"
#include "tests/support/SandboxService.h"

namespace quenwick::tests {
namespace {

using platform::Dictionary;
using platform::List;
using platform::Value;

constexpr auto kScenario = R"({
  "links": [
    {"link": "https://l.example/p/go/1f", "chain": [
      {"status": 302, "to": "https://hop.example/p/rp/deadbeef/url?qw_u=alice"},
      {"status": 307, "to": "shopapp://product/42"}]},
    {"link": "https://l.example/p/go/2", "chain": [{"status": 302, "to": "/gone"}],
     "end": {"status": 404, "body": "no such offer\u001b[31m"}},
    {"link": "https://l.example/p/go/3", "chain": [{"status": 302, "to": "/slow"}],
     "end": {"status": 200, "delay": 60000}}],
  "answers": [{"at": "https://expired.example/p/go/1", "status": 200}],
  "certificates": {"expired.example": "expired"}})";

class ProgramTest : public testing::Test {
 protected:
  Finished run(std::vector<std::string> words) {
    words.insert(words.begin(), {QUENWICK_PROGRAM, "--home", home_.path().string()});
    return runProgram(words);
  }
  Finished resolve(const std::string& link, std::vector<std::string> more = {}) {
    auto words = service_.options();
    words.insert(words.begin(), {"resolve", link});
    words.insert(words.end(), more.begin(), more.end());
    return run(words);
  }
  static Dictionary json(const Finished& finished) {
    return *platform::JSONSerialization::parse(finished.output).as<Dictionary>();
  }

  TemporaryDirectory home_;
  SandboxService service_{kScenario};
};

TEST_F(ProgramTest, WhatOneProcessResolvesTheNextShowsInItsState) {
  auto resolved = resolve("http://l.example/p/go/1f", {"--json"});
  ASSERT_EQ(resolved.exitCode, 0) << resolved.errors;
  auto report = json(resolved);
  EXPECT_EQ(*report.find("link"), "https://l.example/p/go/1f");
  EXPECT_EQ(*report.find("destination"), "shopapp://product/42");
  EXPECT_EQ(*report.find("loadError")->as<Dictionary>()->find("code"), -1002);
  const auto& hops = *report.find("hops")->as<List>();
  ASSERT_EQ(hops.size(), 2U);
  auto first = *hops[0].as<Dictionary>();
  EXPECT_GT(*first.find("milliseconds")->as<double>(), 0);
  first.remove("milliseconds");
  EXPECT_EQ(first, (Dictionary{{"status", 302},
                               {"url", "https://hop.example/p/rp/deadbeef/url?qw_u=alice"},
                               {"qw_u", "alice"},
                               {"rules_key", "deadbeef"},
                               {"halted", false}}));

  auto state = json(run({"state", "--json"}));
  EXPECT_EQ(*state.find("qwuDeeplink"), "alice");
  EXPECT_EQ(*state.find("qwu"), "alice");
  EXPECT_EQ(*state.find("qwU"), Value());
  EXPECT_EQ(*state.find("rulesPicKey"), "deadbeef");
  EXPECT_EQ(*state.find("isFirstInstall"), false) << "the resolution was the first launch";
  const auto& links = *state.find("links")->as<List>();
  ASSERT_EQ(links.size(), 1U);
  EXPECT_EQ(*links[0].as<Dictionary>()->find("value"), "alice");
  EXPECT_EQ(*state.find("sdkID"), *json(run({"state", "--json"})).find("sdkID"));
  auto other = json(run({"--bundle-id", "com.example.other", "state", "--json"}));
  EXPECT_EQ(*other.find("isFirstInstall"), true);
  EXPECT_TRUE(other.find("links")->as<List>()->empty());
}

TEST_F(ProgramTest, FailuresSayWhatWentWrongAndExitWithOne) {
  auto gone = resolve("https://l.example/p/go/2", {"--json"});
  EXPECT_EQ(gone.exitCode, 1) << gone.errors;
  EXPECT_EQ(*json(gone).find("error"), Value(Dictionary{{"domain", "com.quenwick.error"},
                                                        {"code", -1},
                                                        {"reason", "no such offer\x1b[31m"}}));
  auto forPerson = resolve("https://l.example/p/go/2");
  EXPECT_EQ(forPerson.output.find('\x1b'), std::string::npos) << "a server drives the terminal";
  EXPECT_NE(forPerson.output.find("no such offer"), std::string::npos);

  auto late = resolve("https://l.example/p/go/3", {"--json", "--timeout", "0.3"});
  EXPECT_EQ(late.exitCode, 1);
  EXPECT_EQ(*json(late).find("error")->as<Dictionary>()->find("reason"), "The load was cancelled.");

  auto expired = resolve("https://expired.example/p/go/1", {"--json"});
  EXPECT_EQ(expired.exitCode, 0) << "the failing URL is the destination";
  EXPECT_EQ(*json(expired).find("loadError")->as<Dictionary>()->find("code"), -1201);

  for (auto link : {"", "not a url", "https://h/\x01", "https://h/\xff"}) {
    auto finished = run({"resolve", link, "--json"});
    EXPECT_EQ(finished.exitCode, 1) << link;
    EXPECT_NE(json(finished).find("error"), nullptr);
  }
}

TEST_F(ProgramTest, BadUsageExitsWithTwoAndSaysWhy) {
  for (const std::vector<std::string>& words :
       std::vector<std::vector<std::string>>{{},
                                             {"nonsense"},
                                             {"resolve"},
                                             {"resolve", "a", "b"},
                                             {"resolve", "a", "--nonsense"},
                                             {"resolve", "a", "--connect-to", "h:443"},
                                             {"resolve", "a", "--connect-to"},
                                             {"resolve", "a", "--connect-to", "h:443::8443"},
                                             {"resolve", "https://a", "--cacert", "/nowhere"},
                                             {"resolve", "https://a", "--cacert", "/dev/null"},
                                             {"resolve", "https://a", "--timeout", "soon"},
                                             {"verify"},
                                             {"verify", "--api-key", ""},
                                             {"verify", "--api-key", "k", "--service", "nowhere"},
                                             {"verify", "--api-key", "k", "word"},
                                             {"state", "x"},
                                             {"--home=", "state"},
                                             {"--nonsense", "state"}}) {
    auto finished = run(words);
    EXPECT_EQ(finished.exitCode, 2) << (words.empty() ? "" : words[0]);
    EXPECT_TRUE(finished.errors.starts_with("quenwick: "));
    EXPECT_TRUE(finished.output.empty());
  }
  EXPECT_EQ(run({"--help"}).exitCode, 0);
}

TEST_F(ProgramTest, ClassifiesLinks) {
  for (auto [link, shape] : {std::pair("https://h/p/rp/1/url", "rpLink\n"),
                             {"https://h/p/cpm/1/c", "cpLink\n"},
                             {"https://h/p/go/", "goLinks\n"},
                             {"https://h/", "none\n"},
                             {"", "none\n"}}) {
    auto finished = run({"classify", link});
    EXPECT_EQ(finished.exitCode, 0);
    EXPECT_EQ(finished.output, shape);
  }
}

}  // namespace
}  // namespace quenwick::tests
