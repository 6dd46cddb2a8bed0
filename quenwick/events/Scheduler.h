#pragma once

#include <chrono>
#include <memory>

#include "quenwick/platform/Executor.h"

namespace quenwick {

/// Tells how time passes, and runs work when its moment has come.
class Scheduler {
 public:
  using Moment = std::chrono::steady_clock::time_point;

  virtual ~Scheduler() = default;
  virtual Moment now() const = 0;
  /// Runs the work at that moment or soon after, never inside this call, unless it is cancelled
  /// before.
  virtual platform::Cancellable postAt(Moment moment, platform::Work work) = 0;

  /// The one that runs its work on the main actor.
  static std::shared_ptr<Scheduler> main();
};

}  // namespace quenwick
