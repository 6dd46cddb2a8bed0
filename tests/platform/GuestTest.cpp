// The library is a guest in its process: what a host owns stays as it was.

#include <dirent.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <csignal>
#include <fstream>
#include <map>
#include <thread>

#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/StandardStreams.h"
#include "quenwick/platform/URLSession.h"
#include "quenwick/platform/UserDefaults.h"
#include "quenwick/platform/Writer.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/Program.h"
#include "tests/support/SandboxService.h"

namespace {
bool isForkedChild = false;
}

/// Asked by the leak checker of a sanitizer build: a forked child lacks the threads that own what
/// it was given, so that all of it would count as lost.
extern "C" int __lsan_is_turned_off() { return isForkedChild ? 1 : 0; }

namespace quenwick::platform {
namespace {

constexpr auto kScenario = R"({"answers": [
  {"at": "https://a.example/cut", "status": 200, "cut": "before"},
  {"at": "https://a.example/ok", "status": 200, "body": "ok"},
  {"at": "https://a.example/slow", "status": 200, "delay": 60000}]})";

class GuestTest : public testing::Test {
 protected:
  /// Has every thread of the library do some work.
  void work() {
    auto session =
        URLSession::make(service_.configuration(), std::make_shared<URLSessionTaskDelegate>());
    for (auto url : {"https://a.example/ok", "https://a.example/cut"}) {
      try {
        wait(session->data(
            {.url = URL::parse(url), .httpMethod = "POST", .httpBody = std::string(1 << 20, 'x')}));
      } catch (const PlatformError&) {
        // The cut connection is what the test is about.
      }
    }
    UserDefaults::standard().setObject(1.0, "key");
    UserDefaults::standard().synchronize();
  }

  tests::TemporaryDirectory home_;
  tests::SandboxService service_{kScenario};
};

std::map<std::string, std::string> statusOfThread(const std::string& thread) {
  std::ifstream stream("/proc/self/task/" + thread + "/status");
  std::map<std::string, std::string> fields;
  for (std::string line; std::getline(stream, line);) {
    auto colon = line.find(":\t");
    if (colon != line.npos) fields[line.substr(0, colon)] = line.substr(colon + 2);
  }
  return fields;
}

std::vector<std::string> entries(const char* directory) {
  std::vector<std::string> names;
  auto* open = opendir(directory);
  while (auto* entry = readdir(open)) {
    bool isOwn = std::to_string(dirfd(open)) == entry->d_name;
    if (entry->d_name[0] != '.' && !isOwn) names.emplace_back(entry->d_name);
  }
  closedir(open);
  return names;
}

TEST_F(GuestTest, RaisesNoSignalAndHandlesNone) {
  std::map<int, void (*)(int)> before;
  for (int signal = 1; signal < 32; ++signal) {
    struct sigaction action{};
    if (sigaction(signal, nullptr, &action) == 0) before[signal] = action.sa_handler;
  }
  for (int i = 0; i < 5; ++i) work();  // a SIGPIPE would end this process here
  for (const auto& [signal, handler] : before) {
    struct sigaction action{};
    sigaction(signal, nullptr, &action);
    EXPECT_EQ(action.sa_handler, handler) << signal;
  }
}

// A program whose output goes to another one that has ended: its log is lost, and nothing else.
TEST_F(GuestTest, ALogThatNobodyReadsRaisesNoSignal) {
  std::array<int, 2> pipe{};
  ASSERT_EQ(::pipe(pipe.data()), 0);
  ::close(pipe[0]);
  int output = ::dup(STDOUT_FILENO);
  int errors = ::dup(STDERR_FILENO);
  std::fflush(stdout);
  ::dup2(pipe[1], STDOUT_FILENO);
  ::dup2(pipe[1], STDERR_FILENO);
  logPlatformError("nobody reads this");  // a SIGPIPE would end this process here
  printLine("nor this");
  std::clearerr(stdout);
  ::dup2(output, STDOUT_FILENO);
  ::dup2(errors, STDERR_FILENO);
  for (int each : {pipe[1], output, errors}) ::close(each);
  sigset_t left{};
  sigpending(&left);
  EXPECT_FALSE(sigismember(&left, SIGPIPE));
  pthread_sigmask(SIG_BLOCK, nullptr, &left);
  EXPECT_FALSE(sigismember(&left, SIGPIPE)) << "still blocked";
}

TEST_F(GuestTest, ItsThreadsAreNamedAndBlockEverySignal) {
  work();
  int own = 0;
  for (const auto& thread : entries("/proc/self/task")) {
    auto status = statusOfThread(thread);
    if (!status["Name"].starts_with("quenwick-")) continue;
    ++own;
    // SIGKILL, SIGSTOP and the two that the C library keeps for itself cannot be blocked.
    auto blocked = std::stoull(status["SigBlk"], nullptr, 16);
    EXPECT_EQ(blocked | 0x1'8004'0100ULL, ~0ULL & 0xffff'ffff'ffff'ffffULL) << status["Name"];
  }
  auto cores = std::clamp(std::thread::hardware_concurrency(), 1U, 2U);
  EXPECT_GE(own, 2 + static_cast<int>(cores)) << "pool, loading and writer threads";
}

TEST_F(GuestTest, ItsDescriptorsDoNotReachAChildsProgram) {
  auto finished = tests::runProgram({GUEST, home_.path(), service_.sandbox().certificateAuthority(),
                                     std::to_string(service_.sandbox().port())});
  EXPECT_EQ(finished.exitCode, 0) << finished.output << finished.errors;
}

TEST_F(GuestTest, ChangesNothingThatTheWholeProcessShares) {
  std::string locale = setlocale(LC_ALL, nullptr);
  auto directory = std::filesystem::current_path();
  auto mask = umask(022);
  umask(mask);
  std::vector<std::string> environment;
  for (char** entry = environ; *entry; ++entry) environment.emplace_back(*entry);
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  work();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(setlocale(LC_ALL, nullptr), locale);
  EXPECT_EQ(std::filesystem::current_path(), directory);
  EXPECT_EQ(umask(mask), mask);
  for (char** entry = environ; *entry; ++entry) {
    EXPECT_NE(std::ranges::find(environment, *entry), environment.end()) << *entry;
  }
}

// With a comma for the point and a point for thousands, as the host may have set it.
TEST_F(GuestTest, NumbersAreWrittenAndReadTheSameInEveryLocale) {
  ASSERT_TRUE(tests::setCommaLocale(home_.path()));

  EXPECT_EQ(JSONSerialization::text(List{1.5, 1'234'567}), "[1.5,1234567]");
  EXPECT_EQ(JSONSerialization::parse("1.5"), Value(1.5));
  auto url = URL::parse("https://a.example:8443/");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->origin(), "https://a.example:8443");
  auto& first = UserDefaults::make(home_.path() / "preferences.sqlite");
  first.setObject(1.5, "key");
  first.synchronize();
  EXPECT_EQ(UserDefaults::make(home_.path() / "preferences.sqlite").object("key"),
            DefaultsValue(1.5));
  work();  // a request's length, a port: nothing goes out with a thousands separator
  EXPECT_NE(service_.sandbox().requests().find("\"Content-Length\":\"1048576\""),
            std::string::npos);
}

TEST_F(GuestTest, AForkedChildMayExit) {
  work();
  pid_t child = fork();
  isForkedChild = child == 0;
  if (child == 0) exit(7);  // with all hooks that are run at exit
  int status = 0;
  for (int i = 0; i < 20'000 && waitpid(child, &status, WNOHANG) == 0; ++i) usleep(1000);
  ASSERT_TRUE(WIFEXITED(status)) << "it hung, or a signal ended it";
  EXPECT_EQ(WEXITSTATUS(status), 7);
}

}  // namespace
}  // namespace quenwick::platform
