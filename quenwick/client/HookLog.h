#pragma once

#include <functional>
#include <memory>
#include <string_view>

#include "quenwick/platform/LogSink.h"

namespace quenwick {

/// Hands what is logged to the host, on the thread that logs it; what the threads that write log,
/// on the pool: calls of the library may wait for those. What the host's hook has logged in turn,
/// on the same thread, goes to standard error, and so does what comes once the host is not called
/// any more.
class HookLog : public platform::LogSink {
 public:
  using Hook = std::function<void(platform::LogLevel level, std::string_view message)>;

  explicit HookLog(Hook hook) : hook_(std::make_shared<const Hook>(std::move(hook))) {}

  bool isEnabled(platform::LogLevel) const override { return true; }
  void write(const platform::LogEntry& entry) override;

 private:
  const std::shared_ptr<const Hook> hook_;
};

}  // namespace quenwick
