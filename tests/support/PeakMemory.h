#pragma once

#include <sys/resource.h>

namespace quenwick::tests {

/// What a process may grow by that keeps nothing large. The address sanitizer keeps what was freed
/// for a while.
#if __has_feature(address_sanitizer)
inline constexpr long kSmallGrowthKilobytes = 256L << 10;
#else
inline constexpr long kSmallGrowthKilobytes = 64L << 10;
#endif

/// The most memory that this process has had.
inline long peakKilobytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

}  // namespace quenwick::tests
