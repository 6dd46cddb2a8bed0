#include "bench/support/EventHost.h"

#include <algorithm>
#include <chrono>
#include <string>

#include "quenwick/API/APIService/APIService.h"
#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/SecureSessionData.h"
#include "quenwick/platform/HostConfiguration.h"
#include "tests/support/SilentLog.h"

namespace quenwick::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::minutes kPatience(2);

}  // namespace

platform::Dictionary product(std::size_t number) {
  return {{"id", number},
          {"title", "A shoe of number " + std::to_string(number)},
          {"price", 19.9},
          {"url", "https://shop.example/products/" + std::to_string(number)}};
}

EventHost::Prepared::Prepared(const tests::TemporaryDirectory& home,
                              const platform::URLSessionConfiguration& basis,
                              platform::SecItemBackendKind secrets) {
  platform::configureHost(
      {.bundleIdentifier = "com.example.bench", .home = home.path(), .keychain = secrets});
  tests::SilentLog::install();
  AuthenticationKeychain::standard().set(kCredential,
                                         rawValue(SecureSessionData::behaviorAPIToken));
  APIService::setShared(std::make_shared<APIService>(APIService::Host::production(), basis));
}

EventHost::EventHost(const platform::URLSessionConfiguration& basis,
                     platform::SecItemBackendKind secrets)
    : prepared_(home_, basis, secrets) {
  manager_.start(*platform::URL::parse(kEndpoint));
}

std::vector<double> EventHost::offer(std::size_t count, std::size_t ahead) {
  std::vector<double> times;
  times.reserve(count);
  std::vector<platform::Dictionary> made;
  for (std::size_t i = 0; i < count;) {
    made.clear();
    for (std::size_t end = std::min(count, i + ahead); i < end; ++i) made.push_back(product(i));
    for (auto& dictionary : made) {
      auto begin = Clock::now();
      manager_.productViewed(std::move(dictionary));
      times.push_back(std::chrono::duration<double>(Clock::now() - begin).count());
    }
  }
  return times;
}

bool EventHost::areAcknowledged(std::size_t count) {
  bool isSettled = manager_.flush(kPatience);
  auto acknowledged = manager_.counts()[EventState::acknowledged];
  auto before = std::exchange(acknowledged_, acknowledged);
  return isSettled && acknowledged == before + count;
}

}  // namespace quenwick::bench
