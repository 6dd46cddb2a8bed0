#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

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
     "end": {"status": 200, "delay": 60000}},
    {"link": "https://l.example/p/go/4", "chain": [{"status": 302, "to": "/silent"}],
     "end": {"status": 500, "body": ""}}],
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
  EXPECT_NE(state.find("sdkID")->as<std::string>(), nullptr);
}

TEST_F(ProgramTest, WhoLooksAtTheStateMakesNone) {
  for (int i = 0; i < 2; ++i) {
    auto finished = run({"--bundle-id", "com.example.other", "state", "--json"});
    EXPECT_EQ(finished.exitCode, 0) << finished.errors;
    auto state = json(finished);
    EXPECT_EQ(*state.find("sdkID"), Value());
    EXPECT_EQ(*state.find("anonymousID"), Value());
    EXPECT_EQ(*state.find("isFirstInstall"), true);
    EXPECT_EQ(state.find("datapoints")->as<Dictionary>()->size(), 6U);
    EXPECT_TRUE(state.find("links")->as<List>()->empty());
  }
}

TEST_F(ProgramTest, WhatCannotBeReadIsNotDoneAndTheLibrarysLinesAreNoOutput) {
  auto settings = runProgram({QUENWICK_PROGRAM, "--home", "/proc/nowhere", "state", "--json"});
  EXPECT_EQ(settings.exitCode, 1);
  EXPECT_EQ(settings.output, "");
  EXPECT_TRUE(settings.errors.starts_with("quenwick: Settings cannot be read: "));
  EXPECT_EQ(std::ranges::count(settings.errors, '\n'), 1);

  std::filesystem::create_directories(home_.path() / "com.quenwick.cli/QuenwickStorage.sqlite");
  auto links = run({"state", "--json"});
  EXPECT_EQ(links.exitCode, 1);
  EXPECT_EQ(links.output, "");
  auto resolved = resolve("https://l.example/p/go/1f", {"--json"});
  EXPECT_EQ(*json(resolved).find("destination"), "shopapp://product/42") << resolved.output;
  EXPECT_NE(resolved.errors.find("Failed to load persistent store: "), std::string::npos);
}

TEST_F(ProgramTest, WhatCannotBePrintedIsNotDone) {
  auto home = home_.path().string();
  for (const std::string command :
       {QUENWICK_PROGRAM " --help", QUENWICK_PROGRAM " --home $HOME state --json",
        SANDBOX_PROGRAM " --help", SANDBOX_PROGRAM " --print-ca"}) {
    for (const auto* redirection : {" >/dev/full", " >&-"}) {
      auto finished = runProgram(
          {"env", "HOME=" + home, "XDG_DATA_HOME=", "sh", "-c", "exec " + command + redirection});
      EXPECT_EQ(finished.exitCode, 1) << command << redirection;
      EXPECT_TRUE(finished.errors.ends_with(": standard output cannot be written\n"))
          << command << redirection << finished.errors;
    }
  }
}

TEST_F(ProgramTest, FailuresSayWhatWentWrongAndExitWithOne) {
  auto gone = resolve("https://l.example/p/go/2", {"--json"});
  EXPECT_EQ(gone.exitCode, 1) << gone.errors;
  EXPECT_EQ(*json(gone).find("error"), Value(Dictionary{{"domain", "com.quenwick.error"},
                                                        {"code", -1},
                                                        {"reason", "no such offer\x1b[31m"}}));
  EXPECT_EQ(*json(gone).find("status"), 404);
  auto forPerson = resolve("https://l.example/p/go/2");
  EXPECT_EQ(forPerson.output.find('\x1b'), std::string::npos) << "a server drives the terminal";
  EXPECT_NE(forPerson.output.find("no such offer"), std::string::npos);

  EXPECT_TRUE(resolve("https://l.example/p/go/4")
                  .output.ends_with("not resolved 500  (the answer has no text)\n"));

  auto late = resolve("https://l.example/p/go/3", {"--json", "--timeout", "0.3"});
  EXPECT_EQ(late.exitCode, 1);
  EXPECT_EQ(*json(late).find("error")->as<Dictionary>()->find("reason"), "no answer within 0.3 s");

  auto expired = resolve("https://expired.example/p/go/1", {"--json"});
  EXPECT_EQ(expired.exitCode, 1) << "nobody has answered";
  EXPECT_EQ(*json(expired).find("status"), Value());
  EXPECT_EQ(*json(expired).find("destination"), "https://expired.example/p/go/1");
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
                                             {"resolve", "-x"},
                                             {"resolve", "-"},
                                             {"resolve", "a", "--connect-to", "h:443"},
                                             {"resolve", "a", "--connect-to"},
                                             {"resolve", "a", "--connect-to", "h:443::8443"},
                                             {"resolve", "https://a", "--cacert", "/nowhere"},
                                             {"resolve", "https://a", "--cacert", "/dev/null"},
                                             {"resolve", "https://a", "--cacert", "/etc"},
                                             {"resolve", "https://a", "--timeout", "soon"},
                                             {"verify"},
                                             {"verify", "--api-key", ""},
                                             {"verify", "--api-key", "k", "--service", "nowhere"},
                                             {"verify", "--api-key", "k", "word"},
                                             {"state", "x"},
                                             {"--home=", "state"},
                                             {"--bundle-id", "", "state"},
                                             {"--bundle-id", "\xff", "state"},
                                             {"--nonsense", "state"}}) {
    auto finished = run(words);
    EXPECT_EQ(finished.exitCode, 2) << (words.empty() ? "" : words[0]);
    EXPECT_TRUE(finished.errors.starts_with("quenwick: "));
    EXPECT_TRUE(finished.output.empty());
  }
}

TEST_F(ProgramTest, HelpIsPrintedForWhoAsks) {
  for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
           {"--help"}, {"-h"}, {"resolve", "-h"}, {"nonsense", "--help"}}) {
    auto finished = run(words);
    EXPECT_EQ(finished.exitCode, 0) << words[0];
    EXPECT_TRUE(finished.output.starts_with("usage: quenwick ")) << words[0];
  }
  EXPECT_EQ(run({"classify", "--", "--help"}).output, "none\n");
}

TEST(SandboxProgram, BadUsageExitsWithTwoAndSaysWhy) {
  TemporaryDirectory folder;
  for (const auto& [words, says] : std::vector<std::pair<std::vector<std::string>, std::string>>{
           {{"word"}, "it takes options only, not \"word\"\n"},
           {{"--nonsense"}, "there is no option --nonsense\n"},
           {{"--scenario", "/dev/null"}, "the file /dev/null is empty\n"},
           {{"--scenario", "/etc"}, "the file /etc cannot be read\n"},
           {{"--scenario", "/nowhere"}, "the file /nowhere cannot be read\n"}}) {
    auto line = words;
    line.insert(line.begin(), {SANDBOX_PROGRAM, "--state", folder.path().string()});
    auto finished = runProgram(line);
    EXPECT_EQ(finished.exitCode, 2) << says;
    EXPECT_TRUE(finished.errors.starts_with("quenwick-sandbox: " + says)) << finished.errors;
  }
  auto unmade = runProgram({SANDBOX_PROGRAM, "--print-ca", "--state", "/proc/a/b"});
  EXPECT_EQ(unmade.exitCode, 1);
  EXPECT_EQ(unmade.errors,
            "quenwick-sandbox: the folder /proc/a/b cannot be made: No such file or directory\n");
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
