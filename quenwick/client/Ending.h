#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <stop_token>

#include "quenwick/platform/Executor.h"

namespace quenwick {

/// What may end a task before its time, all in one: its caller, a deadline, and the end of the
/// library.
class Ending {
 public:
  explicit Ending(std::stop_token caller, std::optional<std::chrono::nanoseconds> deadline = {});

  std::stop_token token() const { return source_.get_token(); }

 private:
  std::function<void()> stop() const;

  std::stop_source source_;
  platform::Cancellable deadline_;
  std::stop_callback<std::function<void()>> onCaller_;
  std::stop_callback<std::function<void()>> onShutDown_;
};

}  // namespace quenwick
