#pragma once

#include <span>
#include <string>

namespace quenwick::tools {

/// Exit codes of the program.
enum ExitCode { kDone = 0, kFailed = 1, kBadUsage = 2 };

/// Each runs one command on the words behind its name and yields the exit code. Throws
/// `UsageError`.
int resolveCommand(std::span<const std::string> line);
int classifyCommand(std::span<const std::string> line);
int stateCommand(std::span<const std::string> line);
int verifyCommand(std::span<const std::string> line);
int sendCommand(std::span<const std::string> line);
int identifyCommand(std::span<const std::string> line);

}  // namespace quenwick::tools
