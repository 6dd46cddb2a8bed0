#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <string>

#include "quenwick/platform/StandardStreams.h"

namespace quenwick::platform {
namespace {

/// Holds back the signal of a cut pipe on this thread, and takes one that came meanwhile. A thread
/// that blocks it by itself is left alone.
class PipeSignalHeld {
 public:
  PipeSignalHeld() {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  ~PipeSignalHeld() {
    if (sigismember(&before_, SIGPIPE) == 1) return;
    timespec none{};
    while (sigtimedwait(&pipe_, nullptr, &none) < 0 && errno == EINTR) {
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  PipeSignalHeld(const PipeSignalHeld&) = delete;
  PipeSignalHeld& operator=(const PipeSignalHeld&) = delete;

 private:
  sigset_t pipe_{};
  sigset_t before_{};
};

}  // namespace

void writeToStandardError(std::string_view text) {
  PipeSignalHeld held;
  // A log that cannot be written has nowhere to say so.
  [[maybe_unused]] auto written = ::write(STDERR_FILENO, text.data(), text.size());
}

void printLine(std::string_view text) {
  PipeSignalHeld held;
  auto line = std::string(text) + "\n";
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fflush(stdout);
}

}  // namespace quenwick::platform
