#pragma once

#include <optional>
#include <string>

namespace quenwick::bench {

/// What a figure counts; written as its unit in the row.
enum class Unit { seconds, bytes, perSecond };

/// What is asked of a figure.
struct Target {
  enum class Of { ratio, ours };
  double value = 0;
  Of of = Of::ratio;
  /// The figure must reach the value; otherwise it must not exceed it.
  bool isLeast = false;
};

/// One row of the page of figures.
struct Row {
  /// Which of the page's tables it belongs to, and what was run.
  std::string table;
  std::string what;
  Unit unit = Unit::seconds;
  double ours = 0;
  /// Who did the same work in the same run, and its figure.
  std::string other = {};
  std::optional<double> theirs = {};
  /// Of ours to theirs.
  std::optional<double> ratio = {};
  std::optional<Target> target = {};
  /// The size of what the operation meets, in a row of growth.
  std::optional<double> size = {};
};

/// Prints the row as one line of JSON, with whether its target is met. The row of a process that
/// is bound to one core says so and has no target: targets hold for the machine as it is.
void print(Row row);

}  // namespace quenwick::bench
