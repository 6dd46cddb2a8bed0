#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "sandbox/Sandbox.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::sandbox {

/// How often the part stands in the text.
inline std::ptrdiff_t count(const std::string& text, const std::string& part) {
  std::ptrdiff_t result = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++result;
  return result;
}

/// A running sandbox, and the program curl to reach it.
class SandboxFixture : public testing::Test {
 protected:
  void start(std::string scenario = {}) {
    sandbox_.reset();
    sandbox_ = std::make_unique<Sandbox>(Options{.state = state_, .scenario = std::move(scenario)});
  }

  /// Whether each scenario is refused with an error that begins so.
  void expectRefused(const std::vector<std::pair<std::string, std::string>>& scenarios) {
    for (const auto& [scenario, message] : scenarios) {
      try {
        start(scenario);
        ADD_FAILURE() << "accepted: " << scenario;
      } catch (const ScenarioError& error) {
        EXPECT_TRUE(std::string(error.what()).starts_with(message))
            << error.what() << ", not " << message;
      }
    }
  }

  /// The program with what it needs to reach the sandbox under every name.
  std::vector<std::string> curlWords() const {
    return {"curl",         "-sS",
            "--max-time",   "30",
            "--cacert",     sandbox_->certificateAuthority(),
            "--connect-to", ":443:127.0.0.1:" + std::to_string(sandbox_->port()),
            "--connect-to", ":80:127.0.0.1:" + std::to_string(sandbox_->httpPort())};
  }
  std::string curlCommand(const std::string& arguments) const {
    std::string command;
    for (const auto& word : curlWords()) command += word + " ";
    return command + arguments;
  }

  static tests::Finished run(const std::string& command) {
    return tests::runProgram({"sh", "-c", command + " 2>&1"});
  }
  tests::Finished curl(const std::string& arguments) const { return run(curlCommand(arguments)); }

  tests::TemporaryDirectory folder_;
  const std::filesystem::path state_ = folder_.path() / "state";
  std::unique_ptr<Sandbox> sandbox_;
};

}  // namespace quenwick::sandbox
