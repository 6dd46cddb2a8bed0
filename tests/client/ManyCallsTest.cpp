// Calls of several threads, at once or in the middle of something.

#include <thread>

#include "tests/client/ClientHost.h"

namespace quenwick::tests {
namespace {

using Texts = std::vector<std::string>;

constexpr auto kLink = "https://l.example/p/go/1f";
constexpr auto kDestination = "shopapp://product/42";
constexpr auto kSlow = "https://l.example/p/go/3";

class ManyCallsTest : public ClientHost {
 protected:
  void startWithLinks() {
    QWClient::start({.deeplinkDomains = {"l.example"},
                     .shouldRegisterForBehaviorEvents = false,
                     .deeplinkHandler = collect()});
  }
};

TEST_F(ManyCallsTest, TwoLinksAtOnceAreToldOnceEachInTheOrderInWhichTheyEnd) {
  startWithLinks();
  QWClient::addHandleablePaths({{"l.example", {"/spring/", "/late"}}});
  EXPECT_TRUE(QWClient::handleUniversalLink("https://l.example/late"));
  EXPECT_TRUE(QWClient::handleUniversalLink("https://l.example/spring/sale"));
  EXPECT_EQ(results_.wait(2), (Texts{"shopapp://sale", "shopapp://late"}));
  EXPECT_EQ(QWClient::storedDeeplink(), "shopapp://late");
}

TEST_F(ManyCallsTest, ALinkDuringTheVerificationDoesNotWaitForIt) {
  service_.sandbox().setFaults(sandbox::BehaviorPart::verification,
                               R"({"kind": "slow", "delay": 60000})");
  QWClient::start(
      {.apiKey = "key", .deeplinkDomains = {"l.example"}, .deeplinkHandler = collect()});
  auto isAsked = [&] {
    auto received = service_.received();
    return std::ranges::count(received, "POST api.example/behavioral_verification") == 1;
  };
  while (!isAsked()) std::this_thread::yield();
  EXPECT_TRUE(QWClient::handleUniversalLink(kLink));
  EXPECT_EQ(results_.wait(1), Texts{kDestination});
  QWClient::productViewed({{"id", 1}});
  EXPECT_EQ(logged("Could not log event - Events are not enabled"), 1);
}

TEST_F(ManyCallsTest, AnotherStartReplacesTheHandlerAndAddsTheRest) {
  Collected<std::string> replaced;
  QWClient::start({.deeplinkDomains = {"l.example"},
                   .shouldRegisterForBehaviorEvents = false,
                   .deeplinkHandler = [&](const auto&) { replaced.add("called"); }});
  QWClient::start({.deeplinkDomains = {"m.example"},
                   .launchOptions = {{UIApplicationLaunchOptionsURLKey, kLink}},
                   .shouldRegisterForBehaviorEvents = false,
                   .deeplinkHandler = collect()});
  EXPECT_EQ(QWClient::domains(), (std::set<std::string>{"l.example", "m.example"}));
  EXPECT_EQ(results_.wait(1), Texts{kDestination});
  QWClient::start({.launchOptions = {{UIApplicationLaunchOptionsURLKey, kLink}},
                   .shouldRegisterForBehaviorEvents = false,
                   .deeplinkHandler = collect()});
  EXPECT_EQ(results_.wait(2), (Texts{kDestination, kDestination}));
  EXPECT_TRUE(replaced.wait(0).empty());
}

TEST_F(ManyCallsTest, ThreadsMayCallEverythingAtOnce) {
  std::atomic<int> published = 0;
  Collected<std::string> resolved;
  constexpr int kThreads = 4;
  constexpr int kRounds = 20;
  auto use = [&](int thread) {
    for (int round = 0; round < kRounds; ++round) {
      auto name = std::to_string(thread) + "." + std::to_string(round);
      QWClient::start(
          {.apiKey = "key", .deeplinkDomains = {"l.example", name}, .deeplinkHandler = collect()});
      auto subscription =
          QWClient::storedDeeplinkPublisher().subscribe([&published](const auto&) { ++published; });
      EXPECT_TRUE(QWClient::handleUniversalLink(kLink));
      QWClient::resolve(
          kLink, [&resolved](const auto& result) { resolved.add(std::get<std::string>(result)); });
      QWClient::addHandleablePaths({{name, {name}}});
      EXPECT_TRUE(QWClient::handleablePaths().contains(name));
      QWClient::removeHandleablePaths(name);
      QWClient::setQWU(name);
      QWClient::productViewed({{"id", name}});
      QWClient::productSearched({{"query", name}});
      QWClient::setEventsEnabledHandler([] {});
    }
  };
  {
    std::vector<std::jthread> threads;
    for (int thread = 0; thread < kThreads; ++thread) threads.emplace_back(use, thread);
  }
  EXPECT_EQ(QWClient::domains().size(), 1U + kThreads * kRounds);
  EXPECT_EQ(results_.wait(kThreads * kRounds),
            Texts(std::size_t{kThreads * kRounds}, kDestination));
  EXPECT_EQ(resolved.wait(kThreads * kRounds),
            Texts(std::size_t{kThreads * kRounds}, kDestination));
  EXPECT_TRUE(QWClient::flush(std::chrono::seconds(30)));
}

TEST_F(ManyCallsTest, ReceiversAreCalledOnTheMainActorAloneUntilTheyEnd) {
  startWithLinks();
  Collected<std::thread::id> threads;
  platform::MainActor::post([&] { threads.add(std::this_thread::get_id()); });
  auto receive = [&](const auto&) { threads.add(std::this_thread::get_id()); };
  auto first = QWClient::storedDeeplinkPublisher().subscribe(receive);
  threads.wait(2);
  QWClient::handleUniversalLink(kLink);
  auto all = threads.wait(3);
  EXPECT_EQ(all, std::vector<std::thread::id>(3, all.front()));
  EXPECT_NE(all.front(), std::this_thread::get_id());
  first.cancel();
  // One that ends before its first value never gets it.
  {
    auto second = QWClient::storedDeeplinkPublisher().subscribe(receive);
  }
  results_.wait(1);
  QWClient::handleUniversalLink(kLink);
  results_.wait(2);
  settle();
  EXPECT_LE(threads.wait(0).size(), 4U) << "the second's first value at most";
}

TEST_F(ManyCallsTest, ACancelledResolutionFreesItsConnectionAndSaysSo) {
  constexpr std::size_t kConnectionsPerHost = 6;
  std::stop_source stop;
  for (std::size_t i = 0; i < kConnectionsPerHost; ++i) {
    QWClient::resolve(kSlow, collect(), {.stop = stop.get_token()});
  }
  auto taken = [&] {
    auto received = service_.received();
    return std::ranges::count(received, "GET l.example/slow");
  };
  while (taken() < std::ptrdiff_t{kConnectionsPerHost}) std::this_thread::yield();
  auto next = QWClient::resolve(kLink);
  EXPECT_EQ(next.wait_for(std::chrono::milliseconds(0)), std::future_status::timeout);
  stop.request_stop();
  ASSERT_EQ(next.wait_for(std::chrono::seconds(30)), std::future_status::ready);
  EXPECT_EQ(std::get<std::string>(next.get()), kDestination);
  for (const auto& text : results_.wait(kConnectionsPerHost)) {
    EXPECT_NE(text.find("cancel"), text.npos) << text;
  }
  auto stopped = QWClient::resolve(kSlow, {.stop = stop.get_token()}).get();
  auto error = std::get<DeeplinkResolutionError>(stopped).nsError();
  EXPECT_EQ(error.code(), -1);
  EXPECT_EQ(error.userInfo().at("NSURLErrorKey"), kSlow);
}

TEST_F(ManyCallsTest, AnotherClientHasItsOwnHandlersAndEvents) {
  auto first = QWClient::shared();
  Collected<std::string> told;
  QWClient::setEventsEnabledHandler([&] { told.add("first"); });
  auto task = QWClient::registerForBehaviors("key");
  ASSERT_TRUE(task && task->waitFor(std::chrono::seconds(30)));
  EXPECT_EQ(told.wait(1), Texts{"first"});

  QWClient::setShared(std::make_shared<QWClient>());
  QWClient::setEventsEnabledHandler([&] { told.add("second"); });
  settle();
  EXPECT_EQ(told.wait(0).size(), 1U) << "its events are not enabled";
  QWClient::productViewed({{"id", 1}});
  EXPECT_EQ(logged("Could not log event - Events are not enabled"), 1);
  QWClient::registerForBehaviors("key");
  EXPECT_EQ(told.wait(2), (Texts{"first", "second"}));

  QWClient::setShared(first);
  QWClient::setEventsEnabledHandler([&] { told.add("first again"); });
  EXPECT_EQ(told.wait(3).back(), "first again") << "they still are";
  settle();
  EXPECT_EQ(told.wait(0).size(), 3U);
}

TEST_F(ManyCallsTest, NothingIsLoggedWhereTheHostWantsNothing) {
  QWClient::setEnabledLogTypes(QWLogType::none);
  QWClient::start({.deeplinkDomains = {"l.example"}, .deeplinkHandler = collect()});
  QWClient::handleUniversalLink(kLink);
  QWClient::handleUniversalLink("https://stranger.example/p/go/1f");
  QWClient::productViewed({{"id", 1}});
  results_.wait(1);
  EXPECT_EQ(lines_.wait(0), Texts());
  QWClient::setEnabledLogTypes(QWLogType::behaviorEvent);
  QWClient::registerForBehaviorsFromPlist();
  EXPECT_EQ(lines_.wait(0), Texts{"error: Behavioral Verification failed: API Key Not Found"});
}

}  // namespace
}  // namespace quenwick::tests
