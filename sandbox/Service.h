#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "sandbox/Behavior.h"
#include "sandbox/Pause.h"
#include "sandbox/Recorder.h"
#include "sandbox/Scenario.h"
#include "sandbox/StateFolder.h"

namespace quenwick::sandbox {

/// What both servers share.
struct Service {
  Service(std::string_view scenarioText, const std::filesystem::path& folder)
      : scenario(scenarioText) {
    const auto& terms = scenario.behavior();
    if (terms) behavior.emplace(*terms, StateFolder(folder).secret());
  }

  const Scenario scenario;
  Recorder recorder;
  /// None if the scenario says nothing of it.
  std::optional<Behavior> behavior;
  Pause pause;
};

}  // namespace quenwick::sandbox
