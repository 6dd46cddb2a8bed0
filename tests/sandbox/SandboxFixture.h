#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>

#include "sandbox/Sandbox.h"

namespace quenwick::sandbox {

/// A folder that goes away with the test.
class TemporaryFolder {
 public:
  TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "sandbox-test-XXXXXX").string();
    path_ = ::mkdtemp(pattern.data());
  }
  ~TemporaryFolder() { std::filesystem::remove_all(path_); }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::filesystem::path state() const { return path_ / "state"; }

 private:
  std::filesystem::path path_;
};

struct Fetched {
  int exit = -1;
  std::string output;
};

inline Fetched run(const std::string& command) {
  Fetched fetched;
  std::FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return fetched;
  std::array<char, 4096> buffer{};
  for (std::size_t count = 1; count > 0;) {
    count = std::fread(buffer.data(), 1, buffer.size(), pipe);
    fetched.output.append(buffer.data(), count);
  }
  const int status = ::pclose(pipe);
  if (WIFEXITED(status)) fetched.exit = WEXITSTATUS(status);
  return fetched;
}

/// A running sandbox, and the program curl to reach it.
class SandboxFixture : public testing::Test {
 protected:
  void start(std::string scenario = {}) {
    sandbox_.reset();
    sandbox_ = std::make_unique<Sandbox>(
        Options{.state = folder_.state(), .scenario = std::move(scenario)});
  }

  std::string curlCommand(const std::string& arguments) const {
    return "curl -sS --max-time 30 --cacert " + sandbox_->certificateAuthority().string() +
           " --connect-to :443:127.0.0.1:" + std::to_string(sandbox_->port()) +
           " --connect-to :80:127.0.0.1:" + std::to_string(sandbox_->httpPort()) + " " + arguments;
  }

  Fetched curl(const std::string& arguments) const { return run(curlCommand(arguments)); }

  TemporaryFolder folder_;
  std::unique_ptr<Sandbox> sandbox_;
};

}  // namespace quenwick::sandbox
