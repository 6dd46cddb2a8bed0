#pragma once

#include "quenwick/platform/LogSink.h"

namespace quenwick::bench {

/// Takes the lines, as a host's own log does, and keeps none.
class DiscardingLog : public platform::LogSink {
 public:
  bool isEnabled(platform::LogLevel) const override { return true; }
  void write(const platform::LogEntry&) override {}
};

}  // namespace quenwick::bench
