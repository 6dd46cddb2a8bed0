#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace quenwick::tests {

/// A program that runs beside the test and ends with its owner at the latest.
class Daemon {
 public:
  /// `input` is what it reads from its standard input, which then ends.
  explicit Daemon(const std::vector<std::string>& words, const std::string& input = {});
  ~Daemon();
  Daemon(const Daemon&) = delete;
  Daemon& operator=(const Daemon&) = delete;

  /// Its id, while it has not been waited for.
  pid_t process() const { return process_; }

  /// The next line that it prints, without its end; empty where it ends, or takes a minute.
  std::string line();

  /// Stops (SIGSTOP) or goes on (SIGCONT).
  void signal(int number) const;

  /// Ends it at once.
  void kill();

  /// Waits for its end, for a minute at most; its exit code, or 128 and the signal that ended it.
  int wait();

 private:
  pid_t process_ = 0;
  int output_ = -1;
  std::string pending_;
};

}  // namespace quenwick::tests
