#include "bench/support/Interleaved.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <vector>

namespace quenwick::bench {
namespace {

using Clock = std::chrono::steady_clock;

double median(std::vector<double> values) {
  auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::ranges::nth_element(values, middle);
  return *middle;
}

}  // namespace

bool compare(const Comparison& comparison) {
  std::vector<double> ours, theirs, ratios;
  auto timed = [&](const Side& side, std::vector<double>& times) {
    comparison.prepare();
    auto begin = Clock::now();
    bool isRight = true;
    for (int i = 0; i < comparison.repeats; ++i) isRight &= side();
    std::chrono::duration<double, std::micro> taken = Clock::now() - begin;
    times.push_back(taken.count() / comparison.repeats);
    return isRight;
  };
  for (int round = -1; round < comparison.rounds; ++round) {
    // The side that goes first changes from round to round.
    bool isRight = round % 2 == 0
                       ? timed(comparison.ours, ours) && timed(comparison.theirs, theirs)
                       : timed(comparison.theirs, theirs) && timed(comparison.ours, ours);
    if (!isRight) {
      std::printf("%-34s no figure: an outcome was wrong\n", comparison.name.c_str());
      return false;
    }
    if (round < 0) {
      ours.clear();
      theirs.clear();
    } else {
      ratios.push_back(ours.back() / theirs.back());
    }
  }
  auto ratio = median(ratios);
  std::printf("%-34s %9.1f us  %s %9.1f us  ratio %.3f  target %.2f  %s\n", comparison.name.c_str(),
              median(ours), comparison.other.c_str(), median(theirs), ratio, comparison.target,
              ratio <= comparison.target ? "met" : "NOT MET");
  std::fflush(stdout);
  return true;
}

}  // namespace quenwick::bench
