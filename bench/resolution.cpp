// Resolving links, side by side with plain libcurl that follows the same chain and keeps nothing.

#include <algorithm>
#include <cstdio>

#include "bench/support/CurlChain.h"
#include "bench/support/Interleaved.h"
#include "quenwick/API/Stack/HTTPHeader.h"
#include "quenwick/deeplink/DeeplinkManager.h"
#include "quenwick/deeplink/URLSessionRedirectDelegate.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/state/Analytics.h"
#include "tests/support/SandboxService.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::bench {
namespace {

constexpr auto kScenario = R"({"links": [{"link": "https://links.shop.example/p/go/1f", "chain": [
  {"status": 302, "to": "https://links.shop.example/p/rp/deadbeef/url?qw_u=first"},
  {"status": 302, "to": "https://links.shop.example/p/go/00ff?qw_u=second"},
  {"status": 302, "to": "https://links.shop.example/p/go/11ee?qw_u=third"}]}]})";
constexpr auto kLink = "https://links.shop.example/p/go/1f";
constexpr auto kEnd = "https://links.shop.example/p/go/11ee?qw_u=third";
constexpr std::size_t kAtOnce = 200;

platform::Task<void> resolveInto(DeeplinkManager manager, std::atomic<std::size_t>* right) {
  if ((co_await manager.resolve()).absoluteString() == kEnd) ++*right;
}

bool resolve(const std::shared_ptr<platform::URLSession>& session) {
  DeeplinkManager manager(*platform::URL::parse(kLink), session);
  return platform::wait(manager.resolve()).absoluteString() == kEnd;
}

bool resolveAtOnce(const std::shared_ptr<platform::URLSession>& session) {
  const auto link = *platform::URL::parse(kLink);
  std::atomic<std::size_t> right = 0;
  std::vector<platform::TaskHandle> handles;
  for (std::size_t i = 0; i < kAtOnce; ++i) {
    handles.push_back(platform::startTask(resolveInto(DeeplinkManager(link, session), &right)));
  }
  for (const auto& handle : handles) handle.wait();
  return right == kAtOnce;
}

/// What the chain carried must have been kept.
bool isKept() {
  auto& analytics = Analytics::shared();
  return analytics.qwuDeeplink() == "third" && analytics.rulesPicKey() == "11ee";
}

bool loaded(CurlChain& curl, std::size_t count) {
  auto ends = curl.load(kLink, count);
  return ends.size() == count &&
         std::ranges::all_of(ends, [](const auto& end) { return end == kEnd; });
}

int run() {
  tests::TemporaryDirectory home;
  platform::configureHost({.bundleIdentifier = "com.example.bench", .home = home.path()});
  tests::SandboxService service{kScenario};
  auto configuration = service.configuration();
  auto session = platform::URLSession::make(configuration, URLSessionRedirectDelegate::shared());
  CurlChain curl(configuration, HTTPHeader::defaultUserAgent().value);

  Comparison warm{.table = "compared",
                  .name = "chain of three redirects, warm connection",
                  .target = Target{1.25},
                  .rounds = 40,
                  .repeats = 50,
                  .ours = [&] { return resolve(session); },
                  .theirs = [&] { return loaded(curl, 1); }};
  Comparison cold{.table = "compared",
                  .name = "chain of three redirects, new connection",
                  .target = Target{1.10},
                  .rounds = 300,
                  .ours = warm.ours,
                  .theirs = warm.theirs,
                  .prepare = [&] {
                    platform::URLSession::closeIdleConnections();
                    curl.forgetConnections();
                  }};
  Comparison many{.table = "compared",
                  .name = "200 resolutions at once",
                  .target = Target{1.50},
                  .rounds = 30,
                  .ours = [&] { return resolveAtOnce(session); },
                  .theirs = [&] { return loaded(curl, kAtOnce); }};
  bool isComplete = true;
  for (const auto* comparison : {&warm, &cold, &many}) isComplete &= compare(*comparison);
  if (!isKept()) std::fputs("what the chains carried was not kept\n", stderr);
  return isComplete && isKept() ? 0 : 1;
}

}  // namespace
}  // namespace quenwick::bench

int main() { return quenwick::bench::run(); }
