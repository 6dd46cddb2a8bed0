#include <algorithm>
#include <future>
#include <stdexcept>

#include "quenwick/platform/KeysThread.h"
#include "tests/client/ClientHost.h"
#include "tests/support/IdlePool.h"

namespace quenwick::tests {
namespace {

using namespace std::chrono_literals;

class StartTest : public ClientHost {
 protected:
  /// Starts with that key and waits until events are enabled.
  void startWithEvents() {
    Collected<int> enabled;
    QWClient::setEventsEnabledHandler([&] { enabled.add(1); });
    QWClient::start(
        {.apiKey = "key", .deeplinkDomains = {"l.example"}, .deeplinkHandler = collect()});
    ASSERT_EQ(enabled.wait(1).size(), 1U);
    QWClient::setEventsEnabledHandler(nullptr);
  }
  std::vector<Dictionary> events() {
    std::vector<Dictionary> bodies;
    for (const auto& event : service_.events()) {
      bodies.push_back(*event.find("body")->as<Dictionary>());
    }
    return bodies;
  }
};

TEST_F(StartTest, EventsInBothFormsArriveOnceTheKeyIsProven) {
  QWClient::productViewed({{"id", 1}});
  EXPECT_EQ(logged("Could not log event - Events are not enabled"), 1);
  startWithEvents();
  QWClient::productViewed({{"id", 42}, {"price", 3.5}});
  QWClient::productAdded(ProductProperties{.id = "42", .price = 5});
  QWClient::productRemoved({{"id", "42"}});
  QWClient::categoryViewed(ProductCategory{.id = "shoes"});
  QWClient::orderCompleted({{"products", List{Dictionary{{"id", "a"}, {"quantity", 2}}}}});
  for (const auto* query : {"b", "bo", "boots"}) QWClient::productSearched({{"query", query}});
  QWClient::identifyUser();  // nobody is known yet
  QWClient::setQWU("alice");
  QWClient::identifyUser();
  QWClient::logEvent("wished", {{"for", 7}});
  EXPECT_TRUE(QWClient::flush(60s));
  std::vector<std::string> names;
  for (const auto& body : events()) {
    const auto* event = body.find("event");
    names.push_back(*(event ? event : body.find("type"))->as<std::string>());
  }
  std::ranges::sort(names);
  EXPECT_EQ(names, (std::vector<std::string>{"category_viewed", "identify", "order_completed",
                                             "product_added", "product_removed", "product_searched",
                                             "product_viewed", "wished"}));
}

TEST_F(StartTest, EventsAreNotAskedForWhereTheHostWantsNone) {
  QWClient::start({.apiKey = "key", .shouldRegisterForBehaviorEvents = false});
  EXPECT_TRUE(QWClient::flush(60s));
  EXPECT_TRUE(service_.received().empty());
}

TEST_F(StartTest, ABundleOfTheHostsOwnNamesKeyAndDomains) {
  Bundle bundle(Dictionary{{"quen_wick_api_key", "key"},
                           {"quenewick_universal_link_domains", List{"p.example"}}});
  QWClient::registerDeeplinkDomainsFromPlist(bundle);
  EXPECT_EQ(QWClient::domains(), std::set<std::string>{"p.example"});
  auto task = QWClient::registerForBehaviorsFromPlist(bundle);
  ASSERT_TRUE(task && task->waitFor(60s));
  QWClient::logEvent("wished");
  EXPECT_TRUE(QWClient::flush(60s));
  EXPECT_EQ(events().size(), 1U);
  EXPECT_FALSE(QWClient::registerForBehaviorsFromPlist(Bundle(Dictionary{})));
}

TEST_F(StartTest, AWrongKeyEndsInOneLine) {
  service_.expectRefusals();
  auto task = QWClient::registerForBehaviors("another key");
  ASSERT_TRUE(task && task->waitFor(60s));
  EXPECT_EQ(logged("error: Behavioral Verification failed: 403\n"), 1);
  EXPECT_EQ(logged("another key"), 0) << "no secret is logged";
}

TEST_F(StartTest, AKeyThatIsAWordOfALineLeavesTheLine) {
  service_.sandbox().setFaults(sandbox::BehaviorPart::verification,
                               R"([{"kind": "bad-endpoint", "times": 1},
                                   {"status": 500, "json": {
                                     "behavioral_endpoint_api_token": "not to be seen"}}])");
  for (int i = 0; i < 2; ++i) {
    auto task = QWClient::registerForBehaviors("a");
    ASSERT_TRUE(task && task->waitFor(60s));
  }
  EXPECT_EQ(logged("failed: Could not coerce the endpoint into a URL"), 1);
  EXPECT_EQ(logged("failed: 500\n{\"beh…vior…l_"), 1);
  EXPECT_EQ(logged("seen"), 0) << "though its name in the answer is not whole";
}

TEST_F(StartTest, TwoRegistrationsAtOnceTellNeitherKey) {
  service_.sandbox().setFaults(sandbox::BehaviorPart::verification,
                               R"([{"status": 403, "body": "no second-key is known"}])");
  std::promise<void> gate;
  platform::keysThread().post([opened = gate.get_future().share()] { opened.wait(); });
  auto first = QWClient::registerForBehaviors("first-key");
  untilPoolIsIdle();
  auto second = QWClient::registerForBehaviors("second-key");
  untilPoolIsIdle();  // both keys are to be kept, in this order, before either is sent
  gate.set_value();
  ASSERT_TRUE(first->waitFor(60s) && second->waitFor(60s));
  EXPECT_EQ(logged("error: Behavioral Verification failed: 403\nno …"), 2);
  EXPECT_EQ(logged("second-key"), 0) << "which both have sent";
}

TEST_F(StartTest, ARegistrationThatIsCancelledEnablesNothingThoughItsAnswerIsAtHand) {
  startWithEvents();
  QWClient::setShared(std::make_shared<QWClient>());
  std::promise<void> gate;
  platform::keysThread().post([opened = gate.get_future().share()] { opened.wait(); });
  auto task = QWClient::registerForBehaviors("key");
  ASSERT_TRUE(task);
  task->cancel();
  gate.set_value();
  ASSERT_TRUE(task->waitFor(60s));
  EXPECT_EQ(logged("error: Behavioral Verification failed: "), 1);
  QWClient::logEvent("wished");
  EXPECT_EQ(logged("Could not log event - Events are not enabled"), 1);
}

TEST_F(StartTest, TheConfigurationIsTakenBeforeTheFirstUseAlone) {
  EXPECT_FALSE(configure({.serviceURL = "nowhere"}));
  EXPECT_FALSE(configure({.trustAnchors = "no certificate"}));
  EXPECT_FALSE(configure({.home = ""}));
  EXPECT_EQ(logged("error: The configuration was refused: "), 3);
  QWClient::qwU();
  EXPECT_FALSE(configure({.bundleIdentifier = "com.example.late"}));
  EXPECT_EQ(logged("refused: the library is in use already"), 1);
}

TEST_F(StartTest, ARelativeHomeStaysWhereItWasThoughTheProcessMoves) {
  auto elsewhere = std::filesystem::current_path();
  std::filesystem::current_path(home_.path());
  auto moving = configuration();
  moving.home = "state";
  EXPECT_TRUE(configure(moving));
  std::filesystem::current_path(elsewhere);
  QWClient::setQWU("host");
  EXPECT_TRUE(std::filesystem::exists(home_.path() / "state" / "com.example.shop"));
}

TEST_F(StartTest, AHandlersExceptionEndsInOneLineAndTheNextIsCalled) {
  QWClient::start({.deeplinkDomains = {"l.example"},
                   .shouldRegisterForBehaviorEvents = false,
                   .deeplinkHandler = [calls = std::make_shared<int>()](const auto&) {
                     if (++*calls == 1) throw std::runtime_error("the host's own");
                     throw 42;
                   }});
  QWClient::handleUniversalLink("https://l.example/p/go/1f");
  Collected<std::string> second;
  auto subscription = QWClient::storedDeeplinkPublisher().subscribe(
      [&](const auto& link) { second.add(link.value_or("")); });
  second.wait(2);
  settle();  // the handler's turn comes right after the publisher's
  QWClient::handleUniversalLink("https://l.example/p/go/1f");
  second.wait(3);
  settle();
  QWClient::start({.shouldRegisterForBehaviorEvents = false, .deeplinkHandler = collect()});
  QWClient::handleUniversalLink("https://l.example/p/go/1f");
  EXPECT_EQ(results_.wait(1).size(), 1U);
  EXPECT_EQ(logged("the host's own"), 1);
  EXPECT_EQ(logged("an exception of an unknown type"), 1);
}

TEST_F(StartTest, WhatALogHookThrowsIsOneLineOnStandardError) {
  testing::internal::CaptureStderr();
  QWClient::registerDeeplinkDomains({"a hook that throws"});
  auto errors = testing::internal::GetCapturedStderr();
  EXPECT_EQ(std::ranges::count(errors, '\n'), 1) << errors;
  EXPECT_NE(errors.find("thrown"), std::string::npos) << errors;
}

}  // namespace
}  // namespace quenwick::tests
