#pragma once

#include <chrono>
#include <mutex>

#include "quenwick/platform/Clock.h"

namespace quenwick::tests {

/// A clock that stands until a test moves it.
class ManualClock : public platform::Clock {
 public:
  explicit ManualClock(platform::Date now) : now_(now) {}

  platform::Date now() const override {
    std::lock_guard lock(mutex_);
    return now_;
  }
  void advance(std::chrono::microseconds by) {
    std::lock_guard lock(mutex_);
    now_ += by;
  }

 private:
  mutable std::mutex mutex_;
  platform::Date now_;
};

}  // namespace quenwick::tests
