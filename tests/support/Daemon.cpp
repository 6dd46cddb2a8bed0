#include "tests/support/Daemon.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>

namespace quenwick::tests {
namespace {

constexpr int kPatience = 60'000;  // milliseconds

struct Pipe {
  Pipe() {
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  }
  int ends[2] = {-1, -1};
};

}  // namespace

Daemon::Daemon(const std::vector<std::string>& words, const std::string& input) {
  Pipe in;
  Pipe out;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in.ends[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out.ends[1], STDOUT_FILENO);
  // Also where the test itself is ended from outside.
  std::vector<std::string> line{"setpriv", "--pdeathsig", "KILL"};
  line.insert(line.end(), words.begin(), words.end());
  std::vector<char*> arguments;
  for (auto& word : line) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  int error = posix_spawnp(&process_, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(in.ends[0]);
  close(out.ends[1]);
  output_ = out.ends[0];
  [[maybe_unused]] auto written = write(in.ends[1], input.data(), input.size());
  close(in.ends[1]);
  if (error != 0) throw std::runtime_error(words.front() + " did not start");
}

Daemon::~Daemon() {
  kill();
  close(output_);
}

std::string Daemon::line() {
  for (;;) {
    if (auto end = pending_.find('\n'); end != pending_.npos) {
      auto line = pending_.substr(0, end);
      pending_.erase(0, end + 1);
      return line;
    }
    pollfd waiting{output_, POLLIN, 0};
    char bytes[1024];
    if (poll(&waiting, 1, kPatience) <= 0) return {};
    auto size = read(output_, bytes, sizeof bytes);
    if (size <= 0) return {};
    pending_.append(bytes, static_cast<std::size_t>(size));
  }
}

void Daemon::signal(int number) const {
  if (process_ > 0) ::kill(process_, number);
}

void Daemon::kill() {
  if (process_ <= 0) return;
  ::kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
  process_ = 0;
}

int Daemon::wait() {
  int status = 0;
  for (int i = 0; i < kPatience; ++i) {
    if (waitpid(process_, &status, WNOHANG) == process_) {
      process_ = 0;
      return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    usleep(1000);
  }
  return -1;
}

}  // namespace quenwick::tests
