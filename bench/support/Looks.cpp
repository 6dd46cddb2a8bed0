#include "bench/support/Looks.h"

#include <iostream>
#include <map>

#include "bench/support/Run.h"

namespace quenwick::bench {
namespace {

/// Keeps the seconds of each repetition by the benchmark's name.
class Times : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const auto& run : runs) {
      isRight_ &= !run.error_occurred;
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      times_[run.run_name.function_name].push_back(run.real_accumulated_time /
                                                   static_cast<double>(run.iterations));
    }
  }

  bool isRight() const { return isRight_; }
  double median(const std::string& name) const { return bench::median(times_.at(name)); }
  bool contains(const std::string& name) const { return times_.contains(name); }

 private:
  std::map<std::string, std::vector<double>> times_;
  bool isRight_ = true;
};

}  // namespace

void Looks::prepare(benchmark::internal::Benchmark& benchmark) {
  benchmark.MinTime(isQuick() ? 0.002 : 0.02)->Repetitions(rounds(11));
}

bool Looks::run() {
  // Repetitions of all calls come in random order, so that the machine's moods meet all alike.
  std::vector<std::string> words{"looks", "--benchmark_enable_random_interleaving=true"};
  std::vector<char*> arguments;
  for (auto& word : words) arguments.push_back(word.data());
  auto count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  Times times;
  benchmark::RunSpecifiedBenchmarks(&times);
  if (!times.isRight()) {
    std::cerr << "no figures, as an outcome was wrong" << std::endl;
    return false;
  }
  for (std::size_t i = 0; i < rows_.size(); ++i) {
    auto [row, pieces] = rows_[i];
    row.ours = times.median(name(i, kOurs)) / pieces;
    if (auto other = name(i, kOther); times.contains(other)) {
      row.theirs = times.median(other) / pieces;
      row.ratio = row.ours / *row.theirs;
    }
    print(std::move(row));
  }
  return true;
}

}  // namespace quenwick::bench
