// A host exits at random moments of everything that the facade does: it never crashes or hangs,
// and what it had set is there afterwards.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <random>
#include <sstream>
#include <thread>

#include "tests/support/Keyring.h"
#include "tests/support/Program.h"
#include "tests/support/SandboxService.h"

namespace quenwick::tests {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kScenario = R"({
  "links": [
    {"link": "https://l.example/p/go/1f", "chain": [
      {"to": "https://hop.example/p/rp/deadbeef/url"}, {"to": "shopapp://product/42"}]},
    {"link": "https://l.example/slow", "chain": [{"to": "/end"}],
     "end": {"status": 200, "delay": 60000}}],
  "behavior": {"keys": [{"key": "key"}],
    "service": "https://api.example", "endpoint": "https://events.example/v1/events"}})";

constexpr int kInstalls = 4;
// As long as the exit waits for what is still to be written.
constexpr std::chrono::seconds kPatienceAtExit(1);

/// The lines that a host has printed.
struct Story {
  explicit Story(const std::string& output) {
    std::istringstream lines(output);
    std::string word;
    int number = 0;
    while (lines >> word) {
      if (word == "found" && lines >> number) found = number;
      if (word == "flushed" && lines >> number) flushed = number;
      if (word == "set" && lines >> number) set = number;
      if (word == "fault:") std::getline(lines, fault);
    }
  }
  int found = -1;
  int flushed = 0;
  int set = -1;
  std::string fault;
};

/// One install of the host, which runs again and again.
class Install {
 public:
  Install(const SandboxService& service, bool hasKeyring)
      : words_{EXIT_HOST,
               home_.path(),
               service.sandbox().certificateAuthority(),
               std::to_string(service.sandbox().port()),
               service.sandbox().service(),
               hasKeyring ? "keyring" : "sealed"} {}

  void exit(unsigned seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    auto begin = Clock::now();
    auto story = run(std::to_string(seed));
    EXPECT_GE(story.set, story.found);
    flushes += story.flushed > 0;
    // What was set is written at exit, unless that took longer than the exit waits.
    bool mustBeThere = Clock::now() - begin < kPatienceAtExit;
    kept_ = std::max(kept_, mustBeThere ? story.set : story.flushed);
  }
  void look() { run("look"); }

  int flushes = 0;

 private:
  Story run(const std::string& last) {
    auto words = words_;
    words.push_back(last);
    auto finished = runProgram(words);
    EXPECT_EQ(finished.exitCode, 0) << finished.output << finished.errors;
    expectOwnLines(finished.errors);
    Story story(finished.output);
    EXPECT_EQ(story.fault, "");
    EXPECT_GE(story.found, kept_) << "what the last one had set is lost";
    return story;
  }

  /// The library's lines, of what came once the hook was not called any more; nothing else.
  static void expectOwnLines(const std::string& errors) {
    std::istringstream lines(errors);
    for (std::string line; std::getline(lines, line);) {
      EXPECT_TRUE(line.starts_with("com.quenwick.sdk [QW SDK] ")) << line;
      EXPECT_EQ(line.find("escaped"), line.npos) << line;
    }
  }

  TemporaryDirectory home_;
  std::vector<std::string> words_;
  int kept_ = 0;
};

TEST(Exit, AtAnyMomentNeitherCrashesNorHangsNorLosesWhatWasSet) {
  Keyring keyring;
  SessionBus bus(keyring.address());
  SandboxService service(kScenario);
  auto first = std::random_device()() % 1'000'000;
  std::printf("seeds from %u on\n", first);
  std::atomic<int> left = EXITS;
  std::atomic<int> flushes = 0;
  auto exitOften = [&](bool hasKeyring) {
    Install install(service, hasKeyring);
    for (int number = --left; number >= 0 && !testing::Test::HasFailure(); number = --left) {
      install.exit(first + static_cast<unsigned>(number));
    }
    install.look();
    flushes += install.flushes;
  };
  {
    std::vector<std::jthread> installs;
    for (int i = 0; i < kInstalls; ++i) installs.emplace_back(exitOften, i == 0);
  }
  EXPECT_GT(flushes, 0);
}

}  // namespace
}  // namespace quenwick::tests
