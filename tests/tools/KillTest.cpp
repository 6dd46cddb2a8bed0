// SIGKILL at random moments of resolutions: the state is never damaged, and what was reported
// finished is there.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <set>

#include "tests/support/Daemon.h"
#include "tests/support/Program.h"
#include "tests/support/SandboxService.h"

namespace quenwick::tests {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kLinks = 20'000;
constexpr int kKillsInTheMiddle = 100;
constexpr auto kMayBeLost = std::chrono::milliseconds(100);

std::string scenario() {
  std::string links;
  for (int n = 0; n < kLinks; ++n) {
    char link[300];
    std::snprintf(
        link, sizeof link,
        R"(%s{"link":"/p/go/%x","chain":[{"status":302,"delay":2,"to":"https://kill.example/a%d?qw_u=id%d"},)"
        R"({"status":302,"to":"https://kill.example/p/go/%x/end?qw_u=id%d"}]})",
        n == 0 ? "" : ",", static_cast<unsigned>(n), n, n, static_cast<unsigned>(n), n);
    links += link;
  }
  return R"({"links":[)" + links + "]}";
}

/// The program that resolves on and on, and the times at which its lines came.
class Victim {
 public:
  explicit Victim(const std::vector<std::string>& words) : program_(words) {}

  /// Reads lines until the first resolution has begun and for that long after, then kills.
  void killAfter(Clock::duration duration) {
    auto patience = Clock::now() + std::chrono::minutes(1);
    while (!hasBegun() && Clock::now() < patience) readUntil(Clock::now() + duration / 10);
    readUntil(Clock::now() + duration);
    killed_ = Clock::now();
    program_.kill();
    readUntil(Clock::now() + std::chrono::milliseconds(50));
  }

  bool hasBegun() const { return begun_ >= 0; }
  bool wasInTheMiddle() const { return begun_ > lastDone_; }
  int last() const { return std::max(begun_, lastDone_); }

  /// Those reported finished so long before the kill that they must be there.
  std::vector<int> mustBeThere() const {
    std::vector<int> all;
    for (const auto& [number, when] : done_) {
      if (when + kMayBeLost < killed_) all.push_back(number);
    }
    return all;
  }

 private:
  void readUntil(Clock::time_point end) {
    for (auto now = Clock::now(); now < end; now = Clock::now()) {
      auto line = program_.line(std::chrono::ceil<std::chrono::milliseconds>(end - now));
      if (!line) return;
      if (line->starts_with("begin ")) begun_ = std::stoi(line->substr(6));
      if (!line->starts_with("done ")) continue;
      lastDone_ = std::stoi(line->substr(5));
      done_.emplace_back(lastDone_, Clock::now());
    }
  }

  Daemon program_;
  int begun_ = -1;
  int lastDone_ = -1;
  std::vector<std::pair<int, Clock::time_point>> done_;
  Clock::time_point killed_;
};

TEST(Kill, AtAnyMomentLeavesSoundStateAndWhatWasReported) {
  TemporaryDirectory home;
  SandboxService service(scenario());
  const auto store = home.path() / "com.example.killed" / "QuenwickStorage.sqlite";
  const auto settings = home.path() / "com.example.killed" / "preferences.sqlite";
  auto seed = std::random_device()();
  SCOPED_TRACE("seed " + std::to_string(seed));
  std::mt19937 random(seed);

  std::set<int> expected;
  int next = 0;
  int kills = 0;
  int inTheMiddle = 0;
  auto isEnough = [&] { return inTheMiddle >= kKillsInTheMiddle && expected.size() > 100; };
  for (; !isEnough() && kills < 1000 && next < kLinks - 1000; ++kills) {
    Victim victim({RESOLVE_ON, home.path(), service.sandbox().certificateAuthority(),
                   std::to_string(service.sandbox().port()), "kill.example", std::to_string(next),
                   std::to_string(kLinks - 1)});
    // Later and later, for a machine on which few resolutions end in that time.
    victim.killAfter(
        std::chrono::milliseconds(10 + random() % (300U + static_cast<unsigned>(kills))));
    if (victim.hasBegun() && victim.wasInTheMiddle()) ++inTheMiddle;
    for (int number : victim.mustBeThere()) expected.insert(number);
    if (victim.hasBegun()) next = victim.last() + 1;
  }
  EXPECT_GE(inTheMiddle, kKillsInTheMiddle);
  EXPECT_GT(expected.size(), 100U);

  for (const auto& entry : std::filesystem::directory_iterator(store.parent_path())) {
    EXPECT_EQ(entry.path().string().find(".damaged"), std::string::npos) << entry.path();
  }
  for (const auto& file : {store, settings}) {
    auto check = runProgram({"sqlite3", file.string(), "PRAGMA integrity_check"});
    EXPECT_EQ(check.output, "ok\n") << file << check.errors;
  }
  auto kept = runProgram({"sqlite3", store.string(), "SELECT value FROM DeeplinkQWU"});
  std::set<std::string> values;
  for (std::size_t begin = 0, end; (end = kept.output.find('\n', begin)) != std::string::npos;
       begin = end + 1) {
    EXPECT_TRUE(values.insert(kept.output.substr(begin, end - begin)).second) << "stored twice";
  }
  for (int number : expected) {
    EXPECT_TRUE(values.contains("id" + std::to_string(number))) << number << " was reported";
  }
}

}  // namespace
}  // namespace quenwick::tests
