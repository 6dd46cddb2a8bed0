#pragma once

#include <functional>
#include <string_view>

#include "quenwick/platform/LogSink.h"

namespace quenwick {

/// Hands what is logged to the host. What the host's hook has logged in turn, on the same thread,
/// goes to standard error.
class HookLog : public platform::LogSink {
 public:
  using Hook = std::function<void(platform::LogLevel level, std::string_view message)>;

  explicit HookLog(Hook hook) : hook_(std::move(hook)) {}

  bool isEnabled(platform::LogLevel) const override { return true; }
  void write(const platform::LogEntry& entry) override;

 private:
  Hook hook_;
  platform::StandardErrorLog standardError_;
};

}  // namespace quenwick
