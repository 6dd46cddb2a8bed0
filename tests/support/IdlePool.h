#pragma once

#include <algorithm>
#include <barrier>
#include <memory>
#include <thread>

#include "quenwick/platform/Executor.h"

namespace quenwick::tests {

/// Returns once all that was posted to the pool before has run: its threads meet here, all of them.
inline void untilPoolIsIdle() {
  auto count = std::clamp(std::thread::hardware_concurrency(), 1U, 4U);
  auto meeting = std::make_shared<std::barrier<>>(static_cast<std::ptrdiff_t>(count) + 1);
  for (unsigned i = 0; i < count; ++i) {
    platform::pool().post([meeting] { meeting->arrive_and_wait(); });
  }
  meeting->arrive_and_wait();
}

}  // namespace quenwick::tests
