#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "quenwick/platform/JSONSerialization.h"
#include "tests/support/Keyring.h"
#include "tests/tools/BehaviorProgram.h"

namespace quenwick::tests {
namespace {

using platform::Dictionary;
using platform::Value;

constexpr double kWeek = 7 * 24 * 3600.0;

class VerifyTest : public BehaviorProgram {
 protected:
  Finished verify(const std::string& key, const std::vector<std::string>& more = {"--json"}) {
    return run(key, {"verify"}, more);
  }
  /// Whether the line is verified without the service, at last where a keyring is slow to answer.
  static bool becomesCached(const std::vector<std::string>& line) {
    for (int i = 0; i < 10; ++i) {
      auto finished = runProgram(line);
      if (finished.exitCode == 0 && fromCache(finished) == true) return true;
    }
    return false;
  }
  static Value fromCache(const Finished& finished) { return *json(finished).find("fromCache"); }
};

TEST_F(VerifyTest, TheHandshakeHoldsAWeekAndForItsKeyAlone) {
  auto now = std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch());
  auto first = verify("first-key");
  ASSERT_EQ(first.exitCode, 0) << first.errors;
  EXPECT_EQ(*json(first).find("endpoint"), "https://events.shop.example/v1/events");
  EXPECT_NEAR(*json(first).find("expiresAt")->as<double>(), now.count() + kWeek, 3700);
  EXPECT_EQ(fromCache(first), false);

  auto second = verify("first-key");
  EXPECT_EQ(fromCache(second), true);
  EXPECT_EQ(*json(second).find("expiresAt"), *json(first).find("expiresAt"));
  EXPECT_EQ(requests(), 1U) << "the second run asked nobody";

  EXPECT_EQ(fromCache(verify("second-key")), false);
  EXPECT_EQ(fromCache(verify("first-key")), false) << "another key has cleared what was kept";
  EXPECT_EQ(requests(), 3U);
}

TEST_F(VerifyTest, ASecretThatTheServiceRepeatsIsAnEllipsis) {
  for (const auto& [body, shown] : std::vector<std::pair<const char*, const char*>>{
           {R"({"message": "second-key is not a key"})", R"({"message":"… is not a key"})"},
           {R"({"behavioral_endpoint_api_token": "a\"b", "code": 7})",
            R"({"behavioral_endpoint_api_token":"…","code":7})"},
           {R"({"behavioral_endpoint_api_token_identifier": ["not a text"]})",
            R"(":["not a text"]})"}}) {
    service_.sandbox().setFaults(sandbox::BehaviorPart::verification,
                                 std::string(R"([{"status": 422, "json": )") + body + "}]");
    auto error = json(verify("second-key"));
    EXPECT_NE(error.find("error")->as<std::string>()->find(shown), std::string::npos)
        << *error.find("error")->as<std::string>();
  }
}

TEST_F(VerifyTest, FailuresAreTheLineThatTheClientLogs) {
  const std::string line = "Behavioral Verification failed: ";
  struct {
    const char* fault;
    std::string ends;
  } cases[] = {
      {R"("forbidden")", "403"},
      {R"("unprocessable")", "422"},
      {R"("server-error")", "500"},
      {R"("bad-endpoint")", line + "Could not coerce the endpoint into a URL"},
      {R"("no-content")", line},
      {R"("malformed")", line},
      {R"("missing-fields")", line},
      {R"("wrong-types")", line},
      {R"("unauthorized")", line},
      {R"({"kind": "cut", "times": 5})", line + "URLSessionTask failed with error: "},
  };
  for (const auto& [fault, part] : cases) {
    service_.sandbox().setFaults(sandbox::BehaviorPart::verification,
                                 std::string("[") + fault + "]");
    auto finished = verify("first-key");
    EXPECT_EQ(finished.exitCode, 1) << fault;
    auto report = json(finished);
    const auto* error = report.find("error");
    ASSERT_TRUE(error && error->as<std::string>()) << fault << ": " << finished.output;
    EXPECT_TRUE(error->as<std::string>()->starts_with(line)) << *error->as<std::string>();
    EXPECT_NE(error->as<std::string>()->find(part), std::string::npos) << *error->as<std::string>();
    EXPECT_EQ(report.size(), 1U);
    home_.clear();
  }
}

TEST_F(VerifyTest, ADeadlineEndsIt) {
  service_.sandbox().setFaults(sandbox::BehaviorPart::verification,
                               R"([{"kind": "slow", "delay": 60000}])");
  auto finished = verify("first-key", {"--json", "--timeout", "0.2"});
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_EQ(*json(finished).find("error"), "no answer within 0.2 s");
}

TEST_F(VerifyTest, AKeyringThatHangsEndsItSoonAndLosesNothing) {
  Keyring keyring;
  SessionBus bus(keyring.address());
  auto home = home_.path().string();
  std::filesystem::create_directory(home_.path() / "com.quenwick.cli");
  std::ofstream(home_.path() / "com.quenwick.cli/keychain.backend") << "secret-service\n";
  std::vector<std::string> line{"env",
                                "HOME=" + home,
                                "XDG_CONFIG_HOME=" + home,
                                "XDG_DATA_HOME=" + home,
                                QUENWICK_PROGRAM,
                                "verify",
                                "--json",
                                "--api-key",
                                "first-key",
                                "--service",
                                service_.sandbox().service()};
  for (const auto& word : service_.options()) line.push_back(word);
  EXPECT_TRUE(becomesCached(line));
  auto asked = requests();
  keyring.daemon().signal(SIGSTOP);
  auto begin = std::chrono::steady_clock::now();
  auto hanging = runProgram(line);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(15));
  EXPECT_EQ(*json(hanging).find("error"), "Behavioral Verification failed: API Key Not Found");
  EXPECT_NE(hanging.errors.find("The keychain is out of reach"), std::string::npos);
  keyring.daemon().signal(SIGCONT);
  EXPECT_TRUE(becomesCached(line));
  EXPECT_EQ(requests(), asked);
}

}  // namespace
}  // namespace quenwick::tests
