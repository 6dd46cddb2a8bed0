#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace quenwick::tests {

/// How long a test waits for something that must come, on the slowest machine.
inline constexpr std::chrono::seconds kPatience{30};

/// A program that runs beside the test: it reads what is told it and what it writes is read line
/// by line. Killed, and waited for, when destroyed.
class ChildProcess {
 public:
  /// With a null value a variable is taken out of the environment. In `words`, "{descriptor}"
  /// stands for that of its output.
  ChildProcess(std::vector<std::string> words,
               const std::map<std::string, std::optional<std::string>>& environment);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  void tell(const std::string& line);

  /// The next line of its output; none where none comes in time, or no more will.
  std::optional<std::string> line(std::chrono::milliseconds patience = kPatience);

  bool isRunning();
  pid_t identifier() const { return process_; }

  /// The processes that descend from it and have this name, or a longer one that begins so.
  std::vector<pid_t> descendants(const std::string& name) const;

 private:
  pid_t process_ = 0;
  int input_ = -1;
  int output_ = -1;
  std::string pending_;
};

}  // namespace quenwick::tests
