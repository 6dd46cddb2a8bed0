#include "bench/support/Run.h"

#include <sched.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>

namespace quenwick::bench {

bool isQuick() {
  static const bool isSet = std::getenv("QUENWICK_BENCH_QUICK") != nullptr;
  return isSet;
}

int rounds(int full) { return isQuick() ? std::max(full / 10, 3) : full; }

bool isOnOneCore() {
  cpu_set_t processors;
  return sched_getaffinity(0, sizeof processors, &processors) == 0 && CPU_COUNT(&processors) == 1;
}

double quantile(std::vector<double> values, double part) {
  auto index = static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1) + 0.5);
  std::ranges::nth_element(values, values.begin() + index);
  return values[static_cast<std::size_t>(index)];
}

}  // namespace quenwick::bench
