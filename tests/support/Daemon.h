#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace quenwick::tests {

/// A program that runs beside the test and ends with its owner at the latest. It reads what is told
/// it, and what it writes is read line by line.
class Daemon {
 public:
  static constexpr std::chrono::minutes kPatience{1};

  explicit Daemon(const std::vector<std::string>& words);
  ~Daemon();
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  /// Its id, while it has not been waited for.
  pid_t process() const { return process_; }

  /// Gives it text to read; after the end there is no more.
  void tell(const std::string& text);
  void endInput();

  /// The next line that it prints, without its end; none where none comes in time, or no more will.
  std::optional<std::string> line(std::chrono::milliseconds patience = kPatience);

  /// Stops (SIGSTOP) or goes on (SIGCONT).
  void signal(int number) const;

  /// Ends it at once.
  void kill();

  /// Waits for its end; its exit code, or 128 and the signal that ended it, or -1 where it goes on.
  int wait(std::chrono::milliseconds patience = kPatience);

 private:
  pid_t process_ = 0;
  int input_ = -1;
  int output_ = -1;
  std::string pending_;
};

}  // namespace quenwick::tests
