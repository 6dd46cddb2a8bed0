#include "bench/support/Interleaved.h"

#include <chrono>
#include <iostream>
#include <vector>

#include "bench/support/Run.h"

namespace quenwick::bench {
namespace {

using Clock = std::chrono::steady_clock;

/// The figures of each round.
struct Figures {
  std::vector<double> ours = {};
  std::vector<double> theirs = {};
  std::vector<double> ratios = {};
};

/// Lets the side do its work and adds its figure; whether the outcome was right.
bool measure(const Comparison& comparison, const Side& side, std::vector<double>& figures) {
  comparison.prepare();
  auto begin = Clock::now();
  bool isRight = true;
  for (int i = 0; i < comparison.repeats; ++i) isRight &= side();
  std::chrono::duration<double> taken = Clock::now() - begin;
  auto seconds = taken.count() / (comparison.repeats * comparison.pieces);
  figures.push_back(comparison.isRate ? 1 / seconds : seconds);
  return isRight;
}

/// One round; the side that goes first changes from round to round.
bool measureBoth(const Comparison& comparison, int round, Figures& figures) {
  auto ours = [&] { return measure(comparison, comparison.ours, figures.ours); };
  auto theirs = [&] { return measure(comparison, comparison.theirs, figures.theirs); };
  if (round % 2 == 0 ? !(ours() && theirs()) : !(theirs() && ours())) return false;
  figures.ratios.push_back(figures.ours.back() / figures.theirs.back());
  return true;
}

}  // namespace

bool compare(const Comparison& comparison) {
  Figures figures;
  for (int round = -1; round < rounds(comparison.rounds); ++round) {
    if (!measureBoth(comparison, round, figures)) {
      std::cerr << comparison.name << ": no figure, as an outcome was wrong" << std::endl;
      return false;
    }
    if (round < 0) figures = {};
  }
  print({.table = comparison.table,
         .what = comparison.name,
         .unit = comparison.isRate ? Unit::perSecond : Unit::seconds,
         .ours = median(figures.ours),
         .other = comparison.other,
         .theirs = median(figures.theirs),
         .ratio = median(figures.ratios),
         .target = comparison.target});
  return true;
}

}  // namespace quenwick::bench
