#pragma once

#include <benchmark/benchmark.h>

#include <concepts>
#include <string>
#include <utility>
#include <vector>

#include "bench/support/Row.h"

namespace quenwick::bench {

/// Calls that take nanoseconds, measured by Google Benchmark in turn: ours, and where there is one,
/// another's that does the same work.
class Looks {
 public:
  /// `ours`, and `other`, do the work once and say whether its outcome is right; the row's figures
  /// are filled in, for one of so many pieces of the work.
  template <class Ours>
  void add(Row row, Ours ours, double pieces = 1) {
    enroll(name(rows_.size(), kOurs), std::move(ours));
    rows_.push_back({std::move(row), pieces});
  }
  template <class Ours, class Other>
    requires std::invocable<Other>
  void add(Row row, Ours ours, Other other) {
    enroll(name(rows_.size(), kOther), std::move(other));
    add(std::move(row), std::move(ours));
  }

  /// Measures all and prints the rows; false, and no row, where an outcome was wrong.
  bool run();

 private:
  static constexpr auto kOurs = "ours";
  static constexpr auto kOther = "other";

  static std::string name(std::size_t row, const char* side) { return std::to_string(row) + side; }
  static void prepare(benchmark::internal::Benchmark& benchmark);

  template <class Call>
  static void enroll(const std::string& name, Call call) {
    auto measure = [call = std::move(call)](benchmark::State& state) {
      bool isRight = true;
      for (auto _ : state) {
        bool answer = call();
        benchmark::DoNotOptimize(answer);
        isRight &= answer;
      }
      if (!isRight) state.SkipWithError("an outcome was wrong");
    };
    prepare(*benchmark::RegisterBenchmark(name.c_str(), std::move(measure)));
  }

  std::vector<std::pair<Row, double>> rows_;
};

}  // namespace quenwick::bench
