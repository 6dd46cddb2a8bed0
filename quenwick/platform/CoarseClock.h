#pragma once

#include <time.h>

#include <atomic>
#include <cstdint>

namespace quenwick::platform {

/// Nanoseconds of a clock that costs a few of them and ticks every few milliseconds.
inline std::int64_t coarseNow() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return now.tv_sec * std::int64_t{1'000'000'000} + now.tv_nsec;
}

/// When to look again whether another process has written: every few milliseconds at most, which is
/// how stale a look may be.
class LookInterval {
 public:
  /// Whether it is over; then the next one begins. From any thread.
  bool isOver() {
    constexpr std::int64_t kNanoseconds = 5'000'000;
    auto now = coarseNow();
    if (now - lastLooked_.load(std::memory_order_relaxed) < kNanoseconds) return false;
    lastLooked_.store(now, std::memory_order_relaxed);
    return true;
  }

 private:
  std::atomic<std::int64_t> lastLooked_ = 0;
};

}  // namespace quenwick::platform
