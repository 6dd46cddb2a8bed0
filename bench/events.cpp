// Events: how many a second reach a server beside plain libcurl that posts the same bodies, what a
// call costs its caller, and what a server that never answers does to the host.
//
// usage: bench_events [keyring]

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "bench/support/CurlEvents.h"
#include "bench/support/EventHost.h"
#include "bench/support/HTTP2Server.h"
#include "bench/support/Interleaved.h"
#include "bench/support/Run.h"
#include "bench/support/Status.h"
#include "quenwick/API/APIService/APIService.h"
#include "quenwick/API/Stack/RequestConvertible.h"
#include "quenwick/platform/URLSession.h"
#include "tests/support/Keyring.h"

namespace quenwick::bench {
namespace {

using platform::Dictionary;
using platform::SecItemBackendKind;
using Clock = std::chrono::steady_clock;

constexpr auto kAnswer = R"({"message":"accepted","request_id":"5f0c"})";
constexpr std::size_t kEvents = 10'000;
constexpr std::size_t kCalls = 100'000;
constexpr std::size_t kMostConnections = 6;

void printCost(const std::string& what, const std::vector<double>& times) {
  auto row = [&](const char* of, double part, double target) {
    print({.table = "calls",
           .what = "an event's call, " + what + ", " + of,
           .ours = quantile(times, part),
           .target = Target{target, Target::Of::ours}});
  };
  row("median", 0.5, 1e-6);
  row("99th percentile", 0.99, 5e-6);
}

bool callersCost(EventHost& host) {
  auto times = host.offer(kCalls, kCalls);
  if (!host.areAcknowledged(kCalls)) return false;
  printCost("100,000 in a row", times);
  return true;
}

/// What our side sends, for the other to send the same.
struct Sent {
  platform::URLRequest request;
  std::vector<std::string> bodies;
};

Sent sent() {
  auto endpoint = *platform::URL::parse(kEndpoint);
  auto requester =
      APIService::shared()->behavioralEvent(APIService::Host::custom(endpoint))->requester();
  Sent result;
  for (std::size_t i = 0; i < kEvents; ++i) {
    auto properties = *ProductProperties::from(product(i));
    Dictionary payload{{"type", "track"},
                       {"event", "product_viewed"},
                       {"properties", *std::move(properties).asDictionary()}};
    BaseRequest request(HTTPMethod::post, "", requester->makeEventParameters(std::move(payload)));
    request.addBasicAuthorization(kCredential);
    result.request = RequestConvertible({.url = endpoint,
                                         .method = request.method(),
                                         .parameters = *request.parameters(),
                                         .headers = request.headers()})
                         .asURLRequest();
    result.bodies.push_back(*result.request.httpBody);
  }
  return result;
}

bool sendAll(EventHost& host) {
  for (std::size_t i = 0; i < kEvents; ++i) host.manager().productViewed(product(i));
  return host.areAcknowledged(kEvents);
}

bool endToEnd(EventHost& host, const HTTP2Server& server, const char* secrets) {
  auto same = sent();
  CurlEvents curl(server.configuration(), same.request, platform::URLSession::kMostAtOnce);
  bool isRight = sendAll(host) && server.connections() <= kMostConnections;
  return isRight &&
         compare({.table = "compared",
                  .name = std::string("10,000 events over HTTP/2, secrets in ") + secrets,
                  .target = Target{.value = 0.9, .isLeast = true},
                  .rounds = 11,
                  .pieces = kEvents,
                  .isRate = true,
                  .ours = [&] { return sendAll(host); },
                  .theirs = [&] { return curl.post(same.bodies, kAnswer) == kEvents; }}) &&
         server.connections() <= 2 * kMostConnections;  // each side's, used again in each round
}

/// The process that talks to nobody: prints what it cost, and exits.
int unanswered(std::uint16_t port) {
  platform::URLSessionConfiguration basis;
  basis.connectTo.push_back({kEventHost, 443, "127.0.0.1", port});
  EventHost host(basis, SecItemBackendKind::sealedFile);
  auto times = host.offer(kCalls, 100);
  auto counts = host.manager().counts();
  auto kept = counts[EventState::waiting] + counts[EventState::inFlight];
  if (kept + counts[EventState::droppedOverflow] != kCalls) return 1;
  printCost("server that never answers", times);
  print({.table = "memory",
         .what = "most resident memory, 100,000 events and a server that never answers (" +
                 std::to_string(kept) + " of them kept)",
         .unit = Unit::bytes,
         .ours = statusBytes("VmHWM"),
         .target = Target{512e6, Target::Of::ours}});
  std::puts("exit");
  std::fflush(stdout);
  std::exit(0);
}

bool againstSilence(const char* self) {
  SilentServer server;
  tests::Daemon process({self, "unanswered", std::to_string(server.port())});
  for (auto line = process.line(); line && *line != "exit"; line = process.line()) {
    std::puts(line->c_str());
  }
  auto begin = Clock::now();
  if (process.wait() != 0) return false;
  print({.table = "calls",
         .what = "exit of the process, 100,000 events and a server that never answers",
         .ours = std::chrono::duration<double>(Clock::now() - begin).count()});
  return true;
}

int run(const char* self, bool isKeyring) {
  std::unique_ptr<tests::Keyring> keyring;
  std::unique_ptr<tests::SessionBus> bus;
  if (isKeyring) {
    keyring = std::make_unique<tests::Keyring>();
    bus = std::make_unique<tests::SessionBus>(keyring->address());
  }
  HTTP2Server server({kEventHost});
  auto backend = isKeyring ? SecItemBackendKind::secretService : SecItemBackendKind::sealedFile;
  EventHost host(server.configuration(), backend);
  bool isRight = platform::secItemBackend() == backend &&
                 endToEnd(host, server, isKeyring ? "a keyring" : "the sealed file");
  if (!isKeyring) isRight = isRight && callersCost(host) && againstSilence(self);
  return isRight ? 0 : 1;
}

}  // namespace
}  // namespace quenwick::bench

int main(int count, char** words) {
  using namespace std::string_view_literals;
  if (count == 3 && words[1] == "unanswered"sv) {
    return quenwick::bench::unanswered(static_cast<std::uint16_t>(std::stoi(words[2])));
  }
  return quenwick::bench::run(words[0], count == 2 && words[1] == "keyring"sv);
}
