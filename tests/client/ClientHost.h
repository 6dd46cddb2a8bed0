#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

#include "quenwick/client/QWClient.h"
#include "quenwick/platform/MainActor.h"
#include "tests/support/SandboxService.h"

namespace quenwick::tests {

/// Collects what comes from other threads, and waits for it.
template <class T>
class Collected {
 public:
  void add(T value) {
    std::lock_guard lock(mutex_);
    values_.push_back(std::move(value));
    changed_.notify_all();
  }
  /// All that has come once there are so many, or after half a minute.
  std::vector<T> wait(std::size_t count) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, kPatience, [&] { return values_.size() >= count; });
    return values_;
  }
  /// Whether one comes in time of which it is so.
  bool waitFor(const std::function<bool(const T&)>& isSo) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kPatience, [&] { return std::ranges::any_of(values_, isSo); });
  }

 private:
  static constexpr std::chrono::seconds kPatience{30};

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<T> values_;
};

/// A host of the library, configured against a sandbox before anything else.
class ClientHost : public testing::Test {
 protected:
  static constexpr auto kScenario = R"({
    "links": [
      {"link": "https://l.example/p/go/1f", "chain": [
        {"to": "https://hop.example/p/rp/deadbeef/url?qw_u=alice"}, {"to": "shopapp://product/42"}]},
      {"link": "https://l.example/p/go/2", "chain": [{"to": "/gone"}],
       "end": {"status": 404, "body": "no such offer"}},
      {"link": "https://l.example/p/go/3", "chain": [{"to": "/slow"}],
       "end": {"status": 200, "delay": 60000}},
      {"link": "https://l.example/spring/sale", "chain": [{"to": "shopapp://sale"}]},
      {"link": "https://l.example/late", "chain": [{"delay": 5000, "to": "shopapp://late"}]}],
    "behavior": {"keys": [{"key": "key", "bundleIdentifiers": ["com.example.shop"]},
                          {"key": "second-key"}, {"key": "a"}],
      "service": "https://api.example", "endpoint": "https://events.example/v1/events"}})";

  void SetUp() override { ASSERT_TRUE(configure(configuration())); }
  /// The library calls nothing any more that goes with the test.
  void TearDown() override { EXPECT_TRUE(QWClient::shutdown(std::chrono::seconds(60))); }

  Configuration configuration() {
    auto session = service_.configuration();
    Configuration configuration{.serviceURL = service_.sandbox().service(),
                                .trustAnchors = session.additionalTrustAnchors,
                                .bundleIdentifier = "com.example.shop",
                                .bundleVersion = "2.5.0",
                                .home = home_.path()};
    for (const auto& to : session.connectTo) {
      configuration.connectTo.push_back({to.host, to.port, to.toAddress, to.toPort});
    }
    configuration.logHook = [this](LogLevel level, std::string_view message) {
      lines_.add((level == LogLevel::error ? "error: " : "") + std::string(message));
      if (message.find("a hook that throws") != message.npos) throw std::runtime_error("thrown");
    };
    return configuration;
  }
  std::ptrdiff_t logged(const std::string& part) {
    return std::ranges::count_if(lines_.wait(0),
                                 [&](const auto& line) { return line.find(part) != line.npos; });
  }
  /// Waits until what was posted to the main actor so far has run.
  static void settle() {
    Collected<int> reached;
    platform::MainActor::post([&] { reached.add(1); });
    reached.wait(1);
  }
  DeeplinkHandler collect() {
    return [this](const DeeplinkResult& result) {
      const auto* link = std::get_if<std::string>(&result);
      results_.add(link ? *link : std::get<DeeplinkResolutionError>(result).localizedDescription());
    };
  }

  TemporaryDirectory home_;
  SandboxService service_{kScenario};
  Collected<std::string> lines_;
  Collected<std::string> results_;
};

}  // namespace quenwick::tests
