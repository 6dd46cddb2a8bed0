// Bytes on the wire: per handshake, per event of each kind, per resolution, on a new connection and
// on one that is there already.
//
// usage: bench_wire [http1|http2 WHAT]

#include <array>
#include <boost/json.hpp>
#include <functional>
#include <iostream>
#include <map>
#include <string>

#include "bench/support/CountingRelay.h"
#include "bench/support/HTTP2Server.h"
#include "quenwick/API/APIService/APIService.h"
#include "quenwick/API/Repository/BehavioralVerificationRepository.h"
#include "quenwick/deeplink/DeeplinkManager.h"
#include "quenwick/deeplink/URLSessionRedirectDelegate.h"
#include "quenwick/events/BehaviorEventManager.h"
#include "quenwick/platform/HostConfiguration.h"
#include "tests/support/SandboxService.h"
#include "tests/support/SilentLog.h"

namespace quenwick::bench {
namespace {

using platform::Dictionary;
using platform::List;

constexpr auto kScenario = R"({
  "links": [{"link": "https://links.shop.example/p/go/1f", "chain": [
    {"status": 302, "to": "https://links.shop.example/p/rp/deadbeef/url?qw_u=alice"},
    {"status": 302, "to": "https://links.shop.example/landing?utm_source=mail"}]}],
  "behavior": {"keys": [{"key": "bench-key"}], "service": "https://api.shop.example",
    "endpoint": "https://events.shop.example/v1/events"}})";
constexpr auto kLink = "https://links.shop.example/p/go/1f";
constexpr auto kEnd = "https://links.shop.example/landing?utm_source=mail";
constexpr std::chrono::minutes kPatience(1);

/// The sandbox with a relay before it; its clients speak HTTP/1.1, or HTTP/2 through nginx.
class Wire {
 public:
  explicit Wire(bool isHTTP2) {
    if (isHTTP2) front_.emplace(service_.sandbox().hosts(), service_.sandbox().httpPort());
    relay_.emplace(front_ ? front_->port() : service_.sandbox().port());
  }

  platform::URLSessionConfiguration configuration() const {
    auto configuration = front_ ? front_->configuration() : service_.configuration();
    for (auto& to : configuration.connectTo) to.toPort = relay_->port();
    return configuration;
  }

  Traffic take() { return relay_->take(); }

 private:
  tests::SandboxService service_{kScenario};
  std::optional<HTTP2Server> front_;
  std::optional<CountingRelay> relay_;
};

platform::URL verify() {
  BehavioralVerificationRepository repository;
  repository.invalidateBehaviorEndpointCache();
  return platform::wait(repository.verify("bench-key"));
}

Dictionary product() {
  return {{"id", "4711"},
          {"title", "Walking boots, brown"},
          {"price", 89.9},
          {"url", "https://shop.example/products/4711"},
          {"categories", List{Dictionary{{"id", "shoes"}, {"title", "Shoes"}}}}};
}

Dictionary order() {
  Dictionary bought{{"id", "4711"},
                    {"title", "Walking boots, brown"},
                    {"price", 89.9},
                    {"url", "https://shop.example/products/4711"},
                    {"quantity", 1}};
  return {{"id", "A-1042"}, {"revenue", 179.8}, {"products", List{bought, bought}}};
}

using Kind = std::function<void(BehaviorEventManager&)>;

/// One event of each kind, as a shop sends it.
const std::map<std::string, Kind>& kinds() {
  static const std::map<std::string, Kind> all{
      {"product_viewed", [](auto& manager) { manager.productViewed(product()); }},
      {"product_added", [](auto& manager) { manager.productAdded(product()); }},
      {"product_removed", [](auto& manager) { manager.productRemoved(product()); }},
      {"product_searched",
       [](auto& manager) { manager.productSearched(Dictionary{{"query", "walking boots"}}); }},
      {"category_viewed",
       [](auto& manager) {
         manager.categoryViewed(Dictionary{{"id", "shoes"}, {"title", "Shoes"}});
       }},
      {"order_completed", [](auto& manager) { manager.orderCompleted(order()); }},
      {"identify", [](auto& manager) { manager.identifyUser("customer-7"); }},
      {"custom", [](auto& manager) { manager.logCustomEvent("wishlist_shared", {{"items", 3}}); }},
  };
  return all;
}

void print(const std::string& protocol, const std::string& what, const Traffic& fresh,
           const Traffic& reused) {
  boost::json::object row{{"table", "wire"},    {"what", what},          {"protocol", protocol},
                          {"newUp", fresh.up},  {"newDown", fresh.down}, {"up", reused.up},
                          {"down", reused.down}};
  std::cout << row << std::endl;
}

/// Does it twice, on a new connection and again on that one, and prints what went over it.
bool measure(const std::string& protocol, const std::string& what, Wire& wire,
             const std::function<bool()>& act) {
  wire.take();
  std::array<Traffic, 2> seen;
  for (auto& traffic : seen) {
    if (!act()) return false;
    traffic = wire.take();
  }
  print(protocol, what, seen[0], seen[1]);
  return true;
}

bool measureEvent(const std::string& protocol, const std::string& what, Wire& wire) {
  BehaviorEventManager manager;
  manager.start(verify());
  return measure(protocol, what, wire, [&] {
    auto before = manager.counts()[EventState::acknowledged];
    kinds().at(what)(manager);
    return manager.flush(kPatience) && manager.counts()[EventState::acknowledged] == before + 1;
  });
}

bool measureResolution(const std::string& protocol, const std::string& what, Wire& wire) {
  auto session =
      platform::URLSession::make(wire.configuration(), URLSessionRedirectDelegate::shared());
  return measure(protocol, what, wire, [&] {
    DeeplinkManager manager(*platform::URL::parse(kLink), session);
    return platform::wait(manager.resolve()).absoluteString() == kEnd;
  });
}

/// In a process of its own, so that nothing is known of the server's TLS.
bool measureAlone(const std::string& protocol, const std::string& what) {
  tests::TemporaryDirectory home;
  platform::configureHost({.bundleIdentifier = "com.example.bench", .home = home.path()});
  tests::SilentLog::install();
  Wire wire(protocol == "http2");
  APIService::setShared(std::make_shared<APIService>(
      APIService::Host::custom(*platform::URL::parse("https://api.shop.example")),
      wire.configuration()));
  if (what == "resolution") return measureResolution(protocol, what, wire);
  if (what != "handshake") return measureEvent(protocol, what, wire);
  return measure(protocol, what, wire,
                 [] { return verify().host().value_or("") == "events.shop.example"; });
}

bool measureAll(const char* self) {
  std::vector<std::string> all{"handshake", "resolution"};
  for (const auto& [what, kind] : kinds()) all.push_back(what);
  for (const char* protocol : {"http2", "http1"}) {
    for (const auto& what : all) {
      tests::Daemon process({self, protocol, what});
      auto row = process.line();
      if (process.wait() != 0 || !row) return false;
      std::cout << *row << std::endl;
    }
  }
  return true;
}

}  // namespace
}  // namespace quenwick::bench

int main(int count, char** words) {
  bool isDone = count == 3 ? quenwick::bench::measureAlone(words[1], words[2])
                           : quenwick::bench::measureAll(words[0]);
  return isDone ? 0 : 1;
}
