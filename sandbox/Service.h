#pragma once

#include "sandbox/Pause.h"
#include "sandbox/Recorder.h"
#include "sandbox/Scenario.h"

namespace quenwick::sandbox {

/// What both servers share.
struct Service {
  explicit Service(std::string_view scenarioText) : scenario(scenarioText) {}

  const Scenario scenario;
  Recorder recorder;
  Pause pause;
};

}  // namespace quenwick::sandbox
