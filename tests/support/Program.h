#pragma once

#include <string>
#include <vector>

namespace quenwick::tests {

/// What a program did.
struct Finished {
  int exitCode = -1;
  std::string output;
  std::string errors;
};

/// Runs the program to its end, at most for a minute, with standard input closed.
Finished runProgram(const std::vector<std::string>& words);

}  // namespace quenwick::tests
