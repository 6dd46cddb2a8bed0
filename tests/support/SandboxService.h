#pragma once

#include <memory>
#include <string>
#include <vector>

#include "quenwick/platform/URLSession.h"
#include "quenwick/platform/Value.h"
#include "sandbox/Sandbox.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::tests {

/// The entries of a list of the sandbox's, which is JSON.
std::vector<platform::Dictionary> listed(const std::string& json, const char* name);

/// A running sandbox, and how to reach it under the scenario's host names. A test fails in which
/// the sandbox refused a handshake or an event, unless the test asked for it.
class SandboxService {
 public:
  /// The scenario is JSON text; empty for the built-in one.
  explicit SandboxService(std::string scenario = {});
  ~SandboxService();
  SandboxService(const SandboxService&) = delete;
  SandboxService& operator=(const SandboxService&) = delete;

  /// The test is one about refusals.
  void expectRefusals() { areRefusalsExpected_ = true; }

  sandbox::Sandbox& sandbox() const { return *sandbox_; }

  /// A session's configuration that trusts the sandbox and finds every host of the scenario there.
  platform::URLSessionConfiguration configuration() const;

  /// The same as options of the command-line program.
  std::vector<std::string> options() const;

  /// What the sandbox received, and the events that it accepted, as it lists them.
  std::vector<platform::Dictionary> requests() const;
  std::vector<platform::Dictionary> events() const;

  /// What the sandbox received, as "GET host/path".
  std::vector<std::string> received() const;

 private:
  TemporaryDirectory folder_;
  std::unique_ptr<sandbox::Sandbox> sandbox_;
  bool areRefusalsExpected_ = false;
};

}  // namespace quenwick::tests
