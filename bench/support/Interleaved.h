#pragma once

#include <functional>
#include <string>

namespace quenwick::bench {

/// One of the two sides of a comparison: does the work once and says whether its outcome was right.
using Side = std::function<bool()>;

struct Comparison {
  std::string name;
  /// What the other side is.
  std::string other = "curl";
  /// The largest ratio of ours to theirs that is asked for.
  double target = 0;
  int rounds = 0;
  /// How often a side does the work in one go: what the other side leaves behind in the machine
  /// (a processor that is awake, one that sleeps) must not decide.
  int repeats = 1;
  Side ours;
  Side theirs;
  /// Brings both sides into the same state before every round of one; not measured.
  std::function<void()> prepare = [] {};
};

/// Runs both sides in turn, as many rounds as asked after one that is not counted, and prints the
/// medians, the ratio (the median of the rounds' ratios) and whether the target is met. Without
/// the right outcome in every round no figure is printed. Whether there was a figure.
bool compare(const Comparison& comparison);

}  // namespace quenwick::bench
