#pragma once

#include <memory>
#include <string>
#include <vector>

#include "quenwick/platform/URLSession.h"
#include "sandbox/Sandbox.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::tests {

/// A running sandbox, and how to reach it under the scenario's host names.
class SandboxService {
 public:
  /// The scenario is JSON text; empty for the built-in one.
  explicit SandboxService(std::string scenario = {});

  sandbox::Sandbox& sandbox() const { return *sandbox_; }

  /// A session's configuration that trusts the sandbox and finds every host of the scenario there.
  platform::URLSessionConfiguration configuration() const;

  /// The same as options of the command-line program.
  std::vector<std::string> options() const;

  /// What the sandbox received, as "GET host/path".
  std::vector<std::string> received() const;

 private:
  TemporaryDirectory folder_;
  std::unique_ptr<sandbox::Sandbox> sandbox_;
};

}  // namespace quenwick::tests
