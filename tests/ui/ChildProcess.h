#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/Daemon.h"

namespace quenwick::tests {

/// How long a test waits for something that must come, on the slowest machine.
inline constexpr std::chrono::seconds kPatience{30};

using Environment = std::map<std::string, std::optional<std::string>>;

/// A program with a window, and processes of its own.
class ChildProcess : public Daemon {
 public:
  /// With a null value a variable is taken out of the environment.
  ChildProcess(const std::vector<std::string>& words, const Environment& environment);

  bool isRunning() const;

  /// The processes that descend from it and have this name, or a longer one that begins so.
  std::vector<pid_t> descendants(const std::string& name) const;
};

}  // namespace quenwick::tests
