#include "tests/ui/ChildProcess.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace quenwick::tests {
namespace {

using Clock = std::chrono::steady_clock;

/// Where the child finds its output, beside standard output.
constexpr int kOutput = 3;

std::vector<std::string> environmentWith(
    const std::map<std::string, std::optional<std::string>>& changes) {
  std::vector<std::string> all;
  for (auto* one = environ; *one; ++one) {
    std::string entry = *one;
    if (!changes.contains(entry.substr(0, entry.find('=')))) all.push_back(entry);
  }
  for (const auto& [name, value] : changes) {
    if (value) all.push_back(name + "=" + *value);
  }
  return all;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> all;
  for (auto& text : texts) all.push_back(text.data());
  all.push_back(nullptr);
  return all;
}

struct ProcessState {
  std::string name;
  pid_t parent = 0;
};

/// From "1234 (name) S 1 ...".
ProcessState stateOf(pid_t process) {
  std::ifstream file("/proc/" + std::to_string(process) + "/stat");
  std::string text;
  std::getline(file, text);
  auto open = text.find('(');
  auto close = text.rfind(')');
  if (open == text.npos || close == text.npos) return {};
  std::istringstream rest(text.substr(close + 1));
  std::string state;
  ProcessState found{text.substr(open + 1, close - open - 1), 0};
  rest >> state >> found.parent;
  return found;
}

}  // namespace

ChildProcess::ChildProcess(std::vector<std::string> words,
                           const std::map<std::string, std::optional<std::string>>& environment) {
  int input[2];
  int output[2];
  if (pipe2(input, O_CLOEXEC) != 0 || pipe2(output, O_CLOEXEC) != 0) {
    throw std::runtime_error("no pipes");
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, output[1], kOutput);
  for (auto& word : words) {
    if (word == "{descriptor}") word = std::to_string(kOutput);
  }
  auto variables = environmentWith(environment);
  int error = posix_spawnp(&process_, words.at(0).c_str(), &actions, nullptr,
                           pointers(words).data(), pointers(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  close(input[0]);
  close(output[1]);
  input_ = input[1];
  output_ = output[0];
  if (error != 0) throw std::runtime_error(words.at(0) + " did not start");
}

ChildProcess::~ChildProcess() {
  close(input_);
  kill(process_, SIGTERM);
  auto end = Clock::now() + std::chrono::seconds(5);
  while (waitpid(process_, nullptr, WNOHANG) == 0) {
    if (Clock::now() > end) kill(process_, SIGKILL);
    poll(nullptr, 0, 10);
  }
  close(output_);
}

void ChildProcess::tell(const std::string& line) {
  auto text = line + "\n";
  if (write(input_, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
    throw std::runtime_error("the program does not listen");
  }
}

std::optional<std::string> ChildProcess::line(std::chrono::milliseconds patience) {
  auto end = Clock::now() + patience;
  for (;;) {
    if (auto mark = pending_.find('\n'); mark != pending_.npos) {
      auto found = pending_.substr(0, mark);
      pending_.erase(0, mark + 1);
      return found;
    }
    auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
    pollfd waiting{output_, POLLIN, 0};
    if (left <= 0 || poll(&waiting, 1, static_cast<int>(left)) <= 0) return std::nullopt;
    char bytes[4096];
    auto size = read(output_, bytes, sizeof bytes);
    if (size <= 0) return std::nullopt;
    pending_.append(bytes, static_cast<std::size_t>(size));
  }
}

bool ChildProcess::isRunning() { return kill(process_, 0) == 0 && stateOf(process_).parent != 0; }

std::vector<pid_t> ChildProcess::descendants(const std::string& name) const {
  std::vector<pid_t> found;
  auto* folder = opendir("/proc");
  while (auto* entry = folder ? readdir(folder) : nullptr) {
    auto process = static_cast<pid_t>(std::atoi(entry->d_name));
    if (process <= 0 || !stateOf(process).name.starts_with(name)) continue;
    auto ancestor = process;
    while (ancestor > 1 && ancestor != process_) ancestor = stateOf(ancestor).parent;
    if (ancestor == process_) found.push_back(process);
  }
  if (folder) closedir(folder);
  return found;
}

}  // namespace quenwick::tests
