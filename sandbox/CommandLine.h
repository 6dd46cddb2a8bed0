#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <stdexcept>
#include <string_view>

#include "sandbox/Sandbox.h"

namespace quenwick::sandbox {

/// What the program was asked for.
struct CommandLine {
  Options options{.port = 8443};
  std::optional<std::filesystem::path> scenarioFile;
  bool printsAuthority = false;
  bool printsHelp = false;
  bool printsVersion = false;
};

class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads the program's arguments, without its name. Throws `UsageError`.
CommandLine parseCommandLine(std::span<char* const> arguments);

std::string_view helpText();

}  // namespace quenwick::sandbox
