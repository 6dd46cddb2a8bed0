// Events: what a call costs its caller, how many a second reach a server beside plain libcurl that
// posts the same bodies, and what a server that never answers does to the host.
//
// usage: bench_events [keyring]

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string_view>

#include "bench/support/CurlEvents.h"
#include "bench/support/HTTP2Server.h"
#include "bench/support/Interleaved.h"
#include "quenwick/API/APIService/APIService.h"
#include "quenwick/API/Stack/RequestConvertible.h"
#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/SecureSessionData.h"
#include "quenwick/events/BehaviorEventManager.h"
#include "quenwick/events/EventPipeline.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/SecItem.h"
#include "tests/support/Keyring.h"

namespace quenwick::bench {
namespace {

using platform::Dictionary;
using Clock = std::chrono::steady_clock;

constexpr auto kHost = "events.shop.example";
constexpr auto kEndpoint = "https://events.shop.example/v1/events";
constexpr auto kAnswer = R"({"message":"accepted","request_id":"5f0c"})";
constexpr auto kCredential = "aWRlbnRpZmllcjp0b2tlbg==";
constexpr std::size_t kEvents = 10'000;
constexpr std::size_t kCalls = 100'000;
constexpr std::chrono::minutes kPatience(2);

/// Takes the lines, as a host's own log does, and keeps none.
class Discarding : public platform::LogSink {
 public:
  bool isEnabled(platform::LogLevel) const override { return true; }
  void write(const platform::LogEntry&) override {}
};

Dictionary product(std::size_t number) {
  return {{"id", number},
          {"title", "A shoe of number " + std::to_string(number)},
          {"price", 19.9},
          {"url", "https://shop.example/products/" + std::to_string(number)}};
}

void prepareProcess(const tests::TemporaryDirectory& home, bool isKeyring,
                    const platform::URLSessionConfiguration& basis) {
  using Backend = platform::SecItemBackendKind;
  platform::configureHost({.bundleIdentifier = "com.example.bench",
                           .home = home.path(),
                           .keychain = isKeyring ? Backend::secretService : Backend::sealedFile});
  platform::setLogSink(std::make_shared<Discarding>());
  AuthenticationKeychain::standard().set(kCredential,
                                         rawValue(SecureSessionData::behaviorAPIToken));
  APIService::setShared(std::make_shared<APIService>(APIService::Host::production(), basis));
}

void start(BehaviorEventManager& manager) { manager.start(*platform::URL::parse(kEndpoint)); }

/// Offers that many events and gives how long each call took, in nanoseconds, sorted.
std::vector<double> offered(BehaviorEventManager& manager, std::size_t count, std::size_t ahead) {
  std::vector<double> times;
  times.reserve(count);
  std::vector<Dictionary> made;
  for (std::size_t i = 0; i < count;) {
    made.clear();
    for (std::size_t end = std::min(count, i + ahead); i < end; ++i) made.push_back(product(i));
    for (auto& dictionary : made) {
      auto begin = Clock::now();
      manager.productViewed(std::move(dictionary));
      times.push_back(std::chrono::duration<double, std::nano>(Clock::now() - begin).count());
    }
  }
  std::ranges::sort(times);
  return times;
}

void printCost(const char* name, const std::vector<double>& times) {
  auto at = [&](double part) {
    return times[static_cast<std::size_t>(part * static_cast<double>(times.size() - 1))];
  };
  bool isMet = at(0.5) <= 1000 && at(0.99) <= 5000;
  std::printf("%-34s median %6.0f ns  99%% %6.0f ns  99.9%% %7.0f ns  target 1000 and 5000  %s\n",
              name, at(0.5), at(0.99), at(0.999), isMet ? "met" : "NOT MET");
  std::fflush(stdout);
}

bool callersCost(BehaviorEventManager& manager) {
  auto before = manager.counts()[EventState::acknowledged];
  printCost("a call, 100,000 in a row", offered(manager, kCalls, kCalls));
  if (manager.flush(kPatience) && manager.counts()[EventState::acknowledged] == before + kCalls) {
    return true;
  }
  std::printf("events were lost: the figure above does not count\n");
  return false;
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

bool sendAll(BehaviorEventManager& manager) {
  auto before = manager.counts()[EventState::acknowledged];
  for (std::size_t i = 0; i < kEvents; ++i) manager.productViewed(product(i));
  return manager.flush(kPatience) && manager.counts()[EventState::acknowledged] == before + kEvents;
}

bool endToEnd(BehaviorEventManager& manager, const platform::URLSessionConfiguration& basis) {
  auto same = sent();
  CurlEvents curl(basis, same.request, EventPipeline::kMostInFlight);
  return compare({.name = "10,000 events over HTTP/2",
                  .target = 1 / 0.9,
                  .rounds = 11,
                  .ours = [&] { return sendAll(manager); },
                  .theirs = [&] { return curl.post(same.bodies, kAnswer) == kEvents; }});
}

/// The process that talks to nobody: prints what it cost, and exits.
int unanswered(std::uint16_t port) {
  tests::TemporaryDirectory home;
  platform::URLSessionConfiguration basis;
  basis.connectTo.push_back({kHost, 443, "127.0.0.1", port});
  prepareProcess(home, false, basis);
  BehaviorEventManager manager;
  start(manager);
  printCost("a call, server that never answers", offered(manager, kCalls, 100));
  auto counts = manager.counts();
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line) && !line.starts_with("VmHWM:")) {
  }
  auto megabytes = std::stod(line.substr(6)) / 1024;
  auto held = std::to_string(counts[EventState::waiting] + counts[EventState::inFlight]);
  auto dropped = std::to_string(counts[EventState::droppedOverflow]);
  std::printf("%-34s %.0f MB  target 512  %s; %s waiting or in flight, %s dropped\n",
              "memory, server that never answers", megabytes, megabytes < 512 ? "met" : "NOT MET",
              held.c_str(), dropped.c_str());
  std::printf("exit\n");
  std::fflush(stdout);
  std::exit(0);
}

bool againstSilence(const char* self) {
  SilentServer server;
  tests::Daemon process({self, "unanswered", std::to_string(server.port())});
  std::string line;
  while (!(line = process.line()).empty() && line != "exit") std::printf("%s\n", line.c_str());
  auto begin = Clock::now();
  bool isRight = process.wait() == 0;
  std::chrono::duration<double, std::milli> taken = Clock::now() - begin;
  std::printf("%-34s %.0f ms\n", "exit, server that never answers", taken.count());
  return isRight;
}

int run(const char* self, bool isKeyring) {
  std::unique_ptr<tests::Keyring> keyring;
  std::unique_ptr<tests::SessionBus> bus;
  if (isKeyring) {
    keyring = std::make_unique<tests::Keyring>();
    bus = std::make_unique<tests::SessionBus>(keyring->address());
  }
  tests::TemporaryDirectory home;
  HTTP2Server server(kHost);
  prepareProcess(home, isKeyring, server.configuration());
  std::printf("secrets in %s\n",
              platform::secItemBackend() == platform::SecItemBackendKind::secretService
                  ? "the keyring"
                  : "the sealed file");
  BehaviorEventManager manager;
  start(manager);
  bool isComplete = endToEnd(manager, server.configuration());
  isComplete &= callersCost(manager);
  if (!isKeyring) isComplete &= againstSilence(self);
  return isComplete ? 0 : 1;
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
