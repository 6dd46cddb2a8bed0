#include "tests/support/SandboxService.h"

#include <gtest/gtest.h>

#include "quenwick/platform/JSONSerialization.h"
#include "tests/support/FileContents.h"

namespace quenwick::tests {

using platform::Dictionary;

std::vector<Dictionary> listed(const std::string& json, const char* name) {
  auto all = platform::JSONSerialization::parse(json);
  std::vector<Dictionary> entries;
  for (const auto& entry : *all.as<Dictionary>()->find(name)->as<platform::List>()) {
    entries.push_back(*entry.as<Dictionary>());
  }
  return entries;
}

SandboxService::SandboxService(std::string scenario) {
  sandbox::Options options;
  options.state = folder_.path();
  options.scenario = std::move(scenario);
  sandbox_ = std::make_unique<sandbox::Sandbox>(std::move(options));
}

SandboxService::~SandboxService() {
  if (areRefusalsExpected_) return;
  EXPECT_EQ(sandbox_->refusals(), R"({"refusals":[]})");
}

platform::URLSessionConfiguration SandboxService::configuration() const {
  platform::URLSessionConfiguration configuration;
  configuration.additionalTrustAnchors = contents(sandbox_->certificateAuthority());
  for (const auto& host : sandbox_->hosts()) {
    configuration.connectTo.push_back({host, 443, "127.0.0.1", sandbox_->port()});
    configuration.connectTo.push_back({host, 80, "127.0.0.1", sandbox_->httpPort()});
  }
  return configuration;
}

std::vector<std::string> SandboxService::options() const {
  std::vector<std::string> words{"--cacert", sandbox_->certificateAuthority().string()};
  for (const auto& to : configuration().connectTo) {
    words.push_back("--connect-to");
    words.push_back(to.host + ":" + std::to_string(to.port) + ":" + to.toAddress + ":" +
                    std::to_string(to.toPort));
  }
  return words;
}

std::vector<Dictionary> SandboxService::requests() const {
  return listed(sandbox_->requests(), "requests");
}

std::vector<Dictionary> SandboxService::events() const {
  return listed(sandbox_->events(), "events");
}

std::vector<std::string> SandboxService::received() const {
  std::vector<std::string> lines;
  for (const auto& request : requests()) {
    auto text = [&](const char* name) { return *request.find(name)->as<std::string>(); };
    lines.push_back(text("method") + " " + text("host") + text("path"));
  }
  return lines;
}

}  // namespace quenwick::tests
