#pragma once

#include <functional>
#include <optional>
#include <string>

#include "bench/support/Row.h"

namespace quenwick::bench {

/// One of the two sides of a comparison: does the work once and says whether its outcome was right.
using Side = std::function<bool()>;

struct Comparison {
  std::string table;
  std::string name;
  /// What the other side is.
  std::string other = "plain libcurl";
  std::optional<Target> target = {};
  int rounds = 0;
  /// How often a side does the work in one go: what the other side leaves behind in the machine
  /// (a processor that is awake, one that sleeps) must not decide.
  int repeats = 1;
  /// How many pieces one go of the work has. The figure is the time for one; or, with `isRate`,
  /// how many a second were done.
  double pieces = 1;
  bool isRate = false;
  Side ours;
  Side theirs;
  /// Brings both sides into the same state before every round of one; not measured.
  std::function<void()> prepare = [] {};
};

/// Runs both sides in turn, as many rounds as asked after one that is not counted, and prints the
/// row: the medians, and the ratio, which is the median of the rounds' ratios. Without the right
/// outcome in every round no row is printed. Whether there was one.
bool compare(const Comparison& comparison);

}  // namespace quenwick::bench
