// How events grow from 1 to 100,000 at once: the time of each, and the memory of one that waits.
//
// usage: bench_growth [waiting]

#include <chrono>
#include <cstdlib>
#include <string_view>

#include "bench/support/EventHost.h"
#include "bench/support/HTTP2Server.h"
#include "bench/support/Row.h"
#include "bench/support/Run.h"
#include "bench/support/Status.h"
#include "quenwick/events/EventPipeline.h"

namespace quenwick::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto kTable = "growth";

void print(const char* what, std::size_t size, Unit unit, double ours) {
  bench::print({.table = kTable,
                .what = what,
                .unit = unit,
                .ours = ours,
                .size = static_cast<double>(size)});
}

bool acknowledged(EventHost& host, std::size_t size) {
  std::vector<double> calls, all;
  int count = size < 1'000 ? rounds(100) : size < 100'000 ? 3 : 1;
  for (int round = 0; round < count; ++round) {
    auto begin = Clock::now();
    calls.push_back(median(host.offer(size, size)));
    if (!host.areAcknowledged(size)) return false;
    std::chrono::duration<double> taken = Clock::now() - begin;
    all.push_back(taken.count() / static_cast<double>(size));
  }
  print("events offered in a row: a call", size, Unit::seconds, median(calls));
  print("events offered in a row: the time of each, to the last acknowledgement", size,
        Unit::seconds, median(all));
  return true;
}

int run() {
  HTTP2Server server({kEventHost});
  EventHost host(server.configuration(), platform::SecItemBackendKind::sealedFile);
  host.offer(100, 1);  // opens the connections
  if (!host.areAcknowledged(100)) return 1;
  for (auto size : std::initializer_list<std::size_t>{1, 10, 100, 1'000, 10'000, 100'000}) {
    if (!acknowledged(host, size)) return 1;
  }
  return 0;
}

/// Ever more events that wait, as the server never answers.
[[noreturn]] void wait() {
  SilentServer server;
  platform::URLSessionConfiguration basis;
  basis.connectTo.push_back({kEventHost, 443, "127.0.0.1", server.port()});
  EventHost host(basis, platform::SecItemBackendKind::sealedFile);
  std::size_t offered = 100;
  host.offer(offered, 1);
  for (auto size : std::initializer_list<std::size_t>{1'000, 10'000, 100'000}) {
    auto before = statusBytes("RssAnon");
    host.offer(size - offered, 1);
    auto counts = host.manager().counts();
    if (counts[EventState::waiting] + counts[EventState::inFlight] != size) std::_Exit(1);
    print("events that wait: the memory of each", size, Unit::bytes,
          (statusBytes("RssAnon") - before) / static_cast<double>(size - offered));
    offered = size;
  }
  std::exit(0);
}

}  // namespace
}  // namespace quenwick::bench

int main(int count, char** words) {
  if (count == 2 && std::string_view(words[1]) == "waiting") quenwick::bench::wait();
  return quenwick::bench::run();
}
