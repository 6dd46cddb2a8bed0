#include "tests/ui/ChildProcess.h"

#include <dirent.h>
#include <signal.h>

#include <fstream>
#include <sstream>

namespace quenwick::tests {
namespace {

std::vector<std::string> within(const Environment& environment,
                                const std::vector<std::string>& words) {
  std::vector<std::string> line{"env"};
  for (const auto& [name, value] : environment) {
    if (!value) line.insert(line.end(), {"-u", name});
  }
  for (const auto& [name, value] : environment) {
    if (value) line.push_back(name + "=" + *value);
  }
  line.insert(line.end(), words.begin(), words.end());
  return line;
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

ChildProcess::ChildProcess(const std::vector<std::string>& words, const Environment& environment)
    : Daemon(within(environment, words)) {}

bool ChildProcess::isRunning() const {
  return ::kill(process(), 0) == 0 && stateOf(process()).parent != 0;
}

std::vector<pid_t> ChildProcess::descendants(const std::string& name) const {
  std::vector<pid_t> found;
  auto* folder = opendir("/proc");
  while (auto* entry = folder ? readdir(folder) : nullptr) {
    auto one = static_cast<pid_t>(std::atoi(entry->d_name));
    if (one <= 0 || !stateOf(one).name.starts_with(name)) continue;
    auto ancestor = one;
    while (ancestor > 1 && ancestor != process()) ancestor = stateOf(ancestor).parent;
    if (ancestor == process()) found.push_back(one);
  }
  if (folder) closedir(folder);
  return found;
}

}  // namespace quenwick::tests
