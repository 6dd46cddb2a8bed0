// Events from several threads at once: what a call costs, and how many a second are acknowledged.

#include <chrono>
#include <mutex>
#include <string>
#include <thread>

#include "bench/support/EventHost.h"
#include "bench/support/HTTP2Server.h"
#include "bench/support/Row.h"
#include "bench/support/Run.h"

namespace quenwick::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::size_t kEvents = 20'000;

/// What the calls took on all threads, in seconds.
std::vector<double> offerFrom(EventHost& host, std::size_t threads) {
  std::vector<double> all;
  std::mutex mutex;
  std::vector<std::jthread> running;
  for (std::size_t i = 0; i < threads; ++i) {
    running.emplace_back([&] {
      auto times = host.offer(kEvents / threads, 100);
      std::lock_guard lock(mutex);
      all.insert(all.end(), times.begin(), times.end());
    });
  }
  running.clear();
  return all;
}

void printCost(std::size_t threads, const std::vector<double>& medians,
               const std::vector<double>& highs, const std::vector<double>& rates) {
  auto callers = std::to_string(threads) + (threads == 1 ? " calling thread" : " calling threads");
  print({.table = "threads", .what = "a call, median, " + callers, .ours = median(medians)});
  print({.table = "threads", .what = "a call, 99th percentile, " + callers, .ours = median(highs)});
  print({.table = "threads",
         .what = "events acknowledged, " + callers,
         .unit = Unit::perSecond,
         .ours = median(rates)});
}

bool measure(EventHost& host, std::size_t threads) {
  std::vector<double> medians, highs, rates;
  for (int round = -1; round < rounds(5); ++round) {
    auto begin = Clock::now();
    auto times = offerFrom(host, threads);
    if (!host.areAcknowledged(kEvents)) return false;
    std::chrono::duration<double> taken = Clock::now() - begin;
    if (round < 0) continue;  // its threads and connections are new
    medians.push_back(median(times));
    highs.push_back(quantile(times, 0.99));
    rates.push_back(kEvents / taken.count());
  }
  printCost(threads, medians, highs, rates);
  return true;
}

int run() {
  HTTP2Server server({kEventHost});
  EventHost host(server.configuration(), platform::SecItemBackendKind::sealedFile);
  for (auto threads : std::initializer_list<std::size_t>{1, 2, 4}) {
    if (!measure(host, threads)) return 1;
  }
  return 0;
}

}  // namespace
}  // namespace quenwick::bench

int main() { return quenwick::bench::run(); }
