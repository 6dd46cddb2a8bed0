// A host that has no descriptor left when it first uses the library, then some, and the same again:
//   crowded_host HOME CA PORT SERVICE KEYCHAIN     KEYCHAIN is "sealed" or "keyring"
// Exits with 0 if every call returned and all is well in the end.

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <variant>

#include "quenwick/client/QWClient.h"
#include "quenwick/events/BehaviorEventManager.h"

using namespace quenwick;
using namespace std::chrono_literals;

namespace {

void allowDescriptors(rlim_t count) {
  rlimit limit{};
  getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = count;
  setrlimit(RLIMIT_NOFILE, &limit);
}

void configureFrom(char** words) {
  std::ifstream authority(words[2]);
  auto port = static_cast<std::uint16_t>(std::atoi(words[3]));
  bool hasKeyring = std::string(words[5]) == "keyring";
  configure({.serviceURL = words[4],
             .trustAnchors = {std::istreambuf_iterator<char>(authority), {}},
             .connectTo = {{.toAddress = "127.0.0.1", .toPort = port}},
             .bundleIdentifier = "com.example.shop",
             .bundleVersion = "2.5.0",
             .home = words[1],
             .keychain = hasKeyring ? KeychainKind::keyring : KeychainKind::sealedFile});
}

void useEverything(const char* apiKey) {
  QWClient::registerForBehaviors(apiKey);
  QWClient::productSearched({{"query", "hat"}});
  QWClient::productViewed({{"id", "42"}});
  QWClient::handleUniversalLink("https://l.example/p/go/1f");
  QWClient::resolve("https://l.example/p/go/1f", {.deadline = 100ms}).wait();
}

bool isAllWell(const char* apiKey) {
  auto verified = QWClient::registerForBehaviors(apiKey);
  auto resolution = QWClient::resolve("https://l.example/p/go/1f", {.deadline = 20s});
  return verified && verified->waitFor(20s) && QWClient::shared()->eventManager().eventsEnabled() &&
         std::holds_alternative<std::string>(resolution.get()) && QWClient::flush(20s);
}

/// A keyring that a busy machine keeps from answering within its second is away for that while.
bool isSoonWell(const char* apiKey) {
  auto end = std::chrono::steady_clock::now() + 60s;
  while (!isAllWell(apiKey)) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(100ms);
  }
  return true;
}

}  // namespace

int main(int count, char** words) {
  if (count != 6) return 2;
  configureFrom(words);
  for (const auto* apiKey : {"key", "another"}) {
    allowDescriptors(3);
    QWClient::start({.apiKey = apiKey, .deeplinkDomains = {"l.example"}});
    useEverything(apiKey);
    allowDescriptors(200);
    if (!isSoonWell(apiKey)) return 1;
  }
  return 0;
}
