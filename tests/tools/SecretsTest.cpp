// No secret of a handshake reaches what a program prints, logs or leaves behind.

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <thread>

#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/Text.h"
#include "tests/support/Daemon.h"
#include "tests/support/FileContents.h"
#include "tests/support/Keyring.h"
#include "tests/support/Program.h"
#include "tests/support/SandboxService.h"

namespace quenwick::tests {
namespace {

using platform::Dictionary;
using platform::JSONSerialization;
using platform::Value;
using Words = std::vector<std::string>;

constexpr auto kKey = "k3y/of+the \"shop\"";
constexpr auto kOtherKey = "an0ther-key-of-the-shop";

/// Base64 with the alphabet of URLs and without padding.
std::string forURLs(std::string base64) {
  std::ranges::replace(base64, '+', '-');
  std::ranges::replace(base64, '/', '_');
  return base64.substr(0, base64.find('='));
}

/// In JSON as some write it: with every slash escaped.
std::string withSlashesEscaped(std::string json) {
  for (auto at = json.find('/'); at != json.npos; at = json.find('/', at + 2))
    json.insert(at, 1, '\\');
  return json;
}

/// In JSON as others write it: with every character by its number.
std::string byNumbers(std::string_view ascii) {
  std::string json;
  for (char c : ascii) {
    char number[7];
    std::snprintf(number, sizeof number, "\\u%04x", static_cast<unsigned>(c));
    json += number;
  }
  return json;
}

/// Every way in which one of the texts may be written.
Words spellings(const Words& secrets) {
  Words all;
  for (const auto& secret : secrets) {
    auto json = JSONSerialization::text(Value(secret));
    auto base64 = platform::base64Encoded(secret);
    json = json.substr(1, json.size() - 2);
    all.insert(all.end(),
               {secret, json, withSlashesEscaped(json), byNumbers(secret), base64,
                withSlashesEscaped(base64), forURLs(base64), platform::percentEncoded(secret, "")});
  }
  return all;
}

class SecretsTest : public testing::Test {
 protected:
  SecretsTest() {
    ::umask(0);  // what is private is so by its own doing
    for (const auto* key : {kKey, kOtherKey}) {
      auto credential = handshake(key);
      auto text = [&](const char* name) { return *credential.find(name)->as<std::string>(); };
      token_ = text("behavioral_endpoint_api_token");
      identifier_ = text("behavioral_endpoint_api_token_identifier");
      for (const auto& each : spellings({key, token_, identifier_, identifier_ + ":" + token_})) {
        secrets_.push_back(each);
      }
    }
  }

  /// What the service hands out for the key.
  Dictionary handshake(const std::string& key) {
    platform::URLRequest request{
        .url = platform::URL::parse(service_.sandbox().service() + "/behavioral_verification"),
        .httpMethod = "POST",
        .headerFields = {{"Content-Type", "application/json"}},
        .httpBody = JSONSerialization::text(
            Dictionary{{"bundle_identifier", "com.example.tests"}, {"api_key", key}})};
    auto session = platform::URLSession::make(service_.configuration());
    auto answer = JSONSerialization::parse(platform::wait(session->data(request)).data);
    return *answer.as<Dictionary>()->find("data")->as<Dictionary>();
  }

  Words words(Words own, Words command, const std::string& key = kKey) const {
    own.insert(own.begin(), {QUENWICK_PROGRAM});
    own.insert(own.end(), command.begin(), command.end());
    own.insert(own.end(), {"--api-key", key, "--service", service_.sandbox().service()});
    auto options = service_.options();
    own.insert(own.end(), options.begin(), options.end());
    return own;
  }
  Words atHome(Words own = {}) const {
    own.insert(own.end(), {"--home", home_.path().string()});
    return own;
  }

  /// The first secret in the text, or nothing.
  std::string secretIn(std::string_view text) const {
    for (const auto& secret : secrets_) {
      if (text.find(secret) != text.npos) return secret;
    }
    return {};
  }
  void expectNone(const Finished& finished, const std::string& of) const {
    EXPECT_EQ(secretIn(finished.output), "") << of << ": " << finished.output;
    EXPECT_EQ(secretIn(finished.errors), "") << of << ": " << finished.errors;
  }

  /// Nothing below the folder can be read by others, and no file has a secret in clear.
  std::size_t checkedFiles(const std::string& after) const {
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(home_.path())) {
      auto mode = static_cast<unsigned>(entry.status().permissions());
      EXPECT_EQ(mode, entry.is_directory() ? 0700U : 0600U) << after << ": " << entry;
      if (entry.is_directory()) continue;
      EXPECT_EQ(secretIn(contents(entry.path())), "") << after << ": " << entry;
      ++files;
    }
    return files;
  }

  void setFault(const std::string& fault) {
    service_.sandbox().setFaults(sandbox::BehaviorPart::verification, fault);
  }

  TemporaryDirectory home_;
  SandboxService service_{R"({"behavior": {
    "keys": [{"key": "k3y/of+the \"shop\""}, {"key": "an0ther-key-of-the-shop"}],
    "service": "https://api.shop.example", "endpoint": "https://events.shop.example/v1/events"}})"};
  std::string token_;
  std::string identifier_;
  Words secrets_;
};

TEST_F(SecretsTest, AHandshakeItsCacheAndAnotherKeyTellNone) {
  for (const auto& own : {Words{}, Words{"--verbose"}}) {
    for (const auto& more : {Words{}, Words{"--json"}}) {
      for (auto key : {kKey, kKey, kOtherKey}) {
        Words command{"verify"};
        command.insert(command.end(), more.begin(), more.end());
        auto finished = runProgram(words(atHome(own), command, key));
        EXPECT_EQ(finished.exitCode, 0) << finished.errors;
        expectNone(finished, "verify");
      }
    }
  }
  auto sent = runProgram(words(atHome({"--verbose"}), {"send", "basket seen"}, kOtherKey));
  EXPECT_EQ(sent.exitCode, 0) << sent.errors;
  expectNone(sent, "send");
  expectNone(runProgram({QUENWICK_PROGRAM, "--home", home_.path(), "--verbose", "state"}), "state");
  EXPECT_GE(checkedFiles("a handshake"), 3U);
  // What is looked for is what went over the wire.
  auto received = service_.sandbox().requests();
  for (const auto& sentSecret :
       {std::string(kOtherKey), platform::base64Encoded(identifier_ + ":" + token_)}) {
    EXPECT_NE(received.find(sentSecret), received.npos) << sentSecret;
    EXPECT_NE(std::ranges::find(secrets_, sentSecret), secrets_.end());
  }
}

TEST_F(SecretsTest, NoFaultOfTheServiceTellsAny) {
  // Answers that repeat what nobody is to read.
  auto key = spellings({kKey})[1];
  auto repeating = [](const std::string& json) {
    return R"({"status": 403, "body": )" +
           JSONSerialization::text(Value(R"({"error":")" + json + "\"}")) + "}";
  };
  auto credential = R"("behavioral_endpoint_api_token": ")" + token_ +
                    R"(", "behavioral_endpoint_api_token_identifier" : ")" + identifier_ + '"';
  auto bare = R"({"data": {"behavioral_endpoint_url": 1, )" + credential + "}}";
  const Words faults = {
      R"("unauthorized")",
      R"("forbidden")",
      R"("unprocessable")",
      R"("server-error")",
      R"("no-content")",
      R"("malformed")",
      R"("missing-fields")",
      R"("wrong-types")",
      R"("bad-endpoint")",
      R"({"kind": "slow", "delay": 1})",
      R"({"kind": "cut", "times": 5})",
      R"({"kind": "cut-during", "times": 5})",
      R"({"status": 403, "json": {"error": "no such key: )" + key + R"("}})",
      R"({"status": 422, "json": {"message": ")" + key + R"( is none"}})",
      repeating(withSlashesEscaped(key)),
      repeating(byNumbers(kKey)),
      R"({"json": )" + bare + "}",
      R"({"status": 500, "json": )" + bare + "}",
      R"({"status": 307, "json": )" + bare + "}",
      R"({"status": 502, "body": )" +
          JSONSerialization::text(Value(bare.substr(0, bare.size() - 6))) + "}",
      R"({"body": )" + JSONSerialization::text(Value(bare.substr(0, bare.size() - 2))) + "}"};
  std::size_t files = 0;
  for (const auto& fault : faults) {
    for (bool isVerbose : {false, true}) {
      setFault("[" + fault + "]");
      auto line = isVerbose ? words(atHome({"--verbose"}), {"verify", "--json"})
                            : words(atHome(), {"verify"});
      expectNone(runProgram(line), fault);
    }
    files = std::max(files, checkedFiles(fault));
    home_.clear();
  }
  EXPECT_GE(files, 3U);
  EXPECT_EQ(service_.sandbox().refusals(), R"({"refusals":[]})");
}

TEST_F(SecretsTest, AnEndpointThatRepeatsWhatItWasSentTellsNone) {
  auto credential = platform::base64Encoded(identifier_ + ":" + token_);
  for (const auto& said : {credential, withSlashesEscaped(credential), byNumbers(credential),
                           identifier_ + ":" + token_, token_, byNumbers(token_)}) {
    auto body = JSONSerialization::text(Value(R"({"got":"Basic )" + said + "\"}"));
    service_.sandbox().setFaults(sandbox::BehaviorPart::events,
                                 R"([{"status": 400, "body": )" + body + "}]");
    for (const auto& command : {Words{"send", "basket seen"}, Words{"identify", "alice"}}) {
      auto finished = runProgram(words(atHome({"--verbose"}), command, kOtherKey));
      EXPECT_EQ(finished.exitCode, 1);
      EXPECT_NE(finished.errors.find("Basic …"), std::string::npos) << finished.errors;
      expectNone(finished, command.front());
    }
  }
}

TEST_F(SecretsTest, TheProcessShowsNoneWhileItRunsAndLeavesNoneWhenItIsKilled) {
  setFault(R"({"kind": "slow", "delay": 60000})");
  service_.sandbox().forgetRequests();
  Daemon program(words(atHome(), {"verify"}));
  while (service_.received().empty()) std::this_thread::yield();
  auto process = "/proc/" + std::to_string(program.process());
  for (const auto* file : {"/environ", "/cmdline"}) {
    auto shown = contents(process + file);
    EXPECT_FALSE(shown.empty()) << file;
    EXPECT_EQ(secretIn(shown), "") << file;
  }
  program.kill();
  EXPECT_GE(checkedFiles("a kill"), 3U) << "the key is kept before the service is asked";
}

TEST_F(SecretsTest, WithAKeyringNoFileOfTheProgramHoldsAny) {
  Keyring keyring;
  SessionBus bus(keyring.address());
  auto home = home_.path().string();
  Words line{"env", "HOME=" + home, "XDG_CONFIG_HOME=" + home + "/config",
             "XDG_DATA_HOME=" + home + "/data", "XDG_CACHE_HOME=" + home + "/cache"};
  for (const auto& word : words({"--verbose"}, {"verify"})) line.push_back(word);
  Finished finished;
  for (int i = 0; i < 10 && finished.exitCode != 0; ++i) {
    finished = runProgram(line);  // again where the keyring was slow to answer
    expectNone(finished, "verify");
  }
  EXPECT_EQ(finished.exitCode, 0) << finished.errors;
  EXPECT_NE(finished.errors.find("Secrets are kept in "), std::string::npos);
  EXPECT_GE(checkedFiles("a handshake"), 1U);
}

}  // namespace
}  // namespace quenwick::tests
