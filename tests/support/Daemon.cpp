#include "tests/support/Daemon.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <stdexcept>
#include <utility>

namespace quenwick::tests {
namespace {

using Clock = std::chrono::steady_clock;

struct Pipe {
  Pipe() {
    if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  }
  int ends[2] = {-1, -1};
};

}  // namespace

Daemon::Daemon(const std::vector<std::string>& words) {
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
  input_ = in.ends[1];
  output_ = out.ends[0];
  if (error != 0) throw std::runtime_error(words.front() + " did not start");
}

Daemon::~Daemon() {
  endInput();
  signal(SIGTERM);
  wait(std::chrono::seconds(5));
  kill();
  close(output_);
}

void Daemon::tell(const std::string& text) {
  if (write(input_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    throw std::runtime_error("the program does not listen");
  }
}

void Daemon::endInput() {
  if (input_ >= 0) close(std::exchange(input_, -1));
}

std::optional<std::string> Daemon::line(std::chrono::milliseconds patience) {
  auto end = Clock::now() + patience;
  for (;;) {
    if (auto mark = pending_.find('\n'); mark != pending_.npos) {
      auto line = pending_.substr(0, mark);
      pending_.erase(0, mark + 1);
      return line;
    }
    auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    pollfd waiting{output_, POLLIN, 0};
    char bytes[4096];
    if (left < 0 || poll(&waiting, 1, static_cast<int>(left)) <= 0) return std::nullopt;
    auto size = read(output_, bytes, sizeof bytes);
    if (size <= 0) return std::nullopt;
    pending_.append(bytes, static_cast<std::size_t>(size));
  }
}

void Daemon::signal(int number) const {
  if (process_ > 0) ::kill(process_, number);
}

void Daemon::kill() {
  signal(SIGKILL);
  wait();
}

int Daemon::wait(std::chrono::milliseconds patience) {
  auto end = Clock::now() + patience;
  int status = 0;
  while (process_ > 0 && Clock::now() < end) {
    if (waitpid(process_, &status, WNOHANG) == process_) {
      process_ = 0;
      return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    usleep(1000);
  }
  return -1;
}

}  // namespace quenwick::tests
