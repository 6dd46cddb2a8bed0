#pragma once

#include <algorithm>
#include <chrono>

namespace quenwick {

/// The moment so long from now: at once for a negative duration, and in ten years at most.
class Deadline {
 public:
  explicit Deadline(std::chrono::nanoseconds atMost) : end_(Clock::now() + bounded(atMost)) {}

  /// Never negative.
  std::chrono::nanoseconds left() const { return bounded(end_ - Clock::now()); }

 private:
  using Clock = std::chrono::steady_clock;

  static std::chrono::nanoseconds bounded(std::chrono::nanoseconds duration) {
    constexpr std::chrono::nanoseconds kLongest = std::chrono::years(10);
    return std::clamp(duration, std::chrono::nanoseconds(0), kLongest);
  }

  Clock::time_point end_;
};

}  // namespace quenwick
