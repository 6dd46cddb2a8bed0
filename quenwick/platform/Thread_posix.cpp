#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/Thread.h"

namespace quenwick::platform {
namespace {

/// Every signal is blocked on this thread, and on those that it starts, for as long as this lives.
class BlockedSignals {
 public:
  BlockedSignals() {
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &before_);
  }
  ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;

 private:
  sigset_t before_{};
};

struct ExitHook {
  void (*stop)();
  pid_t process;
};

struct ExitHooks {
  std::mutex mutex;
  std::vector<ExitHook> hooks;
  bool isExiting = false;
};

ExitHooks& exitHooks() {
  static auto& instance = *new ExitHooks;
  return instance;
}

void runLatestExitHook() {
  ExitHook hook{};
  {
    std::lock_guard lock(exitHooks().mutex);
    exitHooks().isExiting = true;
    hook = exitHooks().hooks.back();
    exitHooks().hooks.pop_back();
  }
  if (hook.process == getpid()) hook.stop();
}

}  // namespace

std::thread startThread(const char* name, std::function<void()> run) {
  BlockedSignals blocked;
  // It names itself: that of another thread is written to a file of the system.
  return std::thread([name, run = std::move(run)] {
    pthread_setname_np(pthread_self(), name);
    run();
  });
}

bool startDetachedThread(const char* name, std::function<void()> run) {
  static std::atomic<bool> hasReported = false;
  try {
    startThread(name, std::move(run)).detach();
    return true;
  } catch (const std::system_error& error) {
    if (!hasReported.exchange(true)) {
      logPlatformError(std::string("A thread cannot be started: ") + error.what());
    }
    return false;
  }
}

bool atProcessExit(void (*stop)()) {
  std::lock_guard lock(exitHooks().mutex);
  if (exitHooks().isExiting) return false;
  exitHooks().hooks.push_back({stop, getpid()});
  return std::atexit(&runLatestExitHook) == 0;
}

}  // namespace quenwick::platform
