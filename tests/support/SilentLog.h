#pragma once

#include <memory>

#include "quenwick/platform/LogSink.h"

namespace quenwick::tests {

/// Has every line made, as a host's own log does, and keeps none.
class SilentLog : public platform::LogSink {
 public:
  /// Installs one for the process. Always true, so that a static can do it.
  static bool install() {
    platform::setLogSink(std::make_shared<SilentLog>());
    return true;
  }
  bool isEnabled(platform::LogLevel) const override { return true; }
  void write(const platform::LogEntry&) override {}
};

}  // namespace quenwick::tests
