// What the library costs a host that starts it: the time of `start`, and memory.

#include <fstream>
#include <iostream>
#include <map>
#include <string>

#include "bench/support/EventHost.h"
#include "bench/support/HTTP2Server.h"
#include "bench/support/Row.h"
#include "bench/support/Run.h"
#include "tests/support/SandboxService.h"

namespace quenwick::bench {
namespace {

constexpr auto kScenario = R"({"behavior": {
  "keys": [{"key": "bench-key"}], "service": "https://api.shop.example",
  "endpoint": "https://events.shop.example/v1/events"}})";
constexpr auto kEvents = "10000";

/// What a host said of itself, by name.
using Report = std::map<std::string, double>;

/// The service that the hosts talk to: the sandbox verifies keys, nginx takes events.
class Service {
 public:
  Service() {
    std::ofstream(folder_.path() / "authorities.pem")
        << sandbox_.configuration().additionalTrustAnchors
        << events_.configuration().additionalTrustAnchors;
  }

  /// Runs the program as a host whose state lies in the folder; empty where it failed.
  Report run(const char* program, const std::filesystem::path& home, const char* events = "0") {
    tests::Daemon host({program, home.string(), "https://api.shop.example",
                        (folder_.path() / "authorities.pem").string(), events, "api.shop.example",
                        "127.0.0.1", std::to_string(sandbox_.sandbox().port()), kEventHost,
                        "127.0.0.1", std::to_string(events_.port())});
    Report report;
    while (auto line = host.line()) {
      auto blank = line->find(' ');
      report[line->substr(0, blank)] = std::stod(line->substr(blank + 1));
    }
    return host.wait() == 0 ? report : Report();
  }

 private:
  tests::TemporaryDirectory folder_;
  tests::SandboxService sandbox_{kScenario};
  HTTP2Server events_{{kEventHost}};
};

/// The median of what so many hosts said under that name; each with a new state folder, or all with
/// one that an earlier host has left. None where one of them failed.
double reported(Service& service, const char* program, const std::string& name, int count,
                bool isFresh, std::size_t linkUsers = 0) {
  tests::TemporaryDirectory kept;
  if (linkUsers > 0) {
    tests::Daemon filling({FILLING_PROGRAM, kept.path().string(), std::to_string(linkUsers)});
    if (filling.wait() != 0) throw std::out_of_range("no link users");
  }
  if (!isFresh) service.run(program, kept.path());
  std::vector<double> values;
  for (int i = 0; i < count; ++i) {
    tests::TemporaryDirectory own;
    auto report = service.run(program, isFresh ? own.path() : kept.path());
    values.push_back(report.at(name));
  }
  return median(values);
}

void printStart(Service& service) {
  auto row = [&](const char* what, bool isFresh, double target) {
    print({.table = "start",
           .what = what,
           .ours = reported(service, HOST_PROGRAM, "start", rounds(60), isFresh),
           .target = Target{target, Target::Of::ours}});
  };
  row("`start`, warm files, median", false, 1e-3);
  row("`start`, fresh install, median", true, 5e-3);
}

void printGrowth(Service& service) {
  for (auto linkUsers : std::initializer_list<std::size_t>{1, 10, 100, 1'000, 10'000}) {
    print({.table = "growth",
           .what = "link users stored: `start`",
           .ours = reported(service, HOST_PROGRAM, "start", rounds(20), false, linkUsers),
           .size = static_cast<double>(linkUsers)});
  }
}

void printMemory(Service& service) {
  auto row = [&](const char* what, double bytes, std::optional<Target> target = {}) {
    print({.table = "memory", .what = what, .unit = Unit::bytes, .ours = bytes, .target = target});
  };
  auto with = reported(service, HOST_PROGRAM, "anonymous", rounds(10), false);
  auto without = reported(service, BARE_PROGRAM, "anonymous", rounds(10), false);
  row("anonymous memory of a minimal host after start, beyond the same without the library",
      with - without, Target{6e6, Target::Of::ours});
  tests::TemporaryDirectory home;
  auto report = service.run(HOST_PROGRAM, home.path(), kEvents);
  row("resident memory of a minimal host, idle, all that is shared included", report.at("idle"));
  row("the same at the most under 10,000 events", report.at("highest"));
  row("the same after them", report.at("afterwards"));
  row("the same once the allocator has given back what is free", report.at("trimmed"));
}

int run() {
  try {
    Service service;
    printStart(service);
    printMemory(service);
    printGrowth(service);
    return 0;
  } catch (const std::out_of_range&) {
    std::cerr << "no figures, as a host failed" << std::endl;
    return 1;
  }
}

}  // namespace
}  // namespace quenwick::bench

int main() { return quenwick::bench::run(); }
