#pragma once

#include <time.h>

#include <cstdint>

namespace quenwick::platform {

/// Nanoseconds of a clock that costs a few of them and ticks every few milliseconds.
inline std::int64_t coarseNow() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return now.tv_sec * std::int64_t{1'000'000'000} + now.tv_nsec;
}

}  // namespace quenwick::platform
