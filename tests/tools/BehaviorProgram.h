#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "quenwick/platform/JSONSerialization.h"
#include "tests/support/Program.h"
#include "tests/support/SandboxService.h"

namespace quenwick::tests {

/// Runs the program's commands that speak with the service, against a sandbox with two keys.
class BehaviorProgram : public testing::Test {
 protected:
  Finished run(const std::string& key, std::vector<std::string> command,
               const std::vector<std::string>& more) {
    command.insert(command.begin(), {QUENWICK_PROGRAM, "--home", home_.path().string()});
    command.insert(command.end(), {"--api-key", key, "--service", service_.sandbox().service()});
    for (const auto& words : {service_.options(), more}) {
      command.insert(command.end(), words.begin(), words.end());
    }
    return runProgram(command);
  }
  static platform::Dictionary json(const Finished& finished) {
    return *platform::JSONSerialization::parse(finished.output).as<platform::Dictionary>();
  }
  std::size_t requests() const { return service_.received().size(); }

  TemporaryDirectory home_;
  SandboxService service_{R"({"behavior": {
    "keys": [{"key": "first-key"}, {"key": "second-key"}],
    "service": "https://api.shop.example", "endpoint": "https://events.shop.example/v1/events"}})"};
};

}  // namespace quenwick::tests
