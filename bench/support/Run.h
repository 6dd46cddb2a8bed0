#pragma once

#include <vector>

namespace quenwick::bench {

/// Whether the run only shows that everything works (QUENWICK_BENCH_QUICK in the environment): its
/// figures are no good.
bool isQuick();

/// `full`, or about a tenth of it in a quick run.
int rounds(int full);

/// Whether this process may use one processor alone.
bool isOnOneCore();

/// The value below which that part of the values lies; 0.5 is the median.
double quantile(std::vector<double> values, double part);
inline double median(std::vector<double> values) { return quantile(std::move(values), 0.5); }

}  // namespace quenwick::bench
