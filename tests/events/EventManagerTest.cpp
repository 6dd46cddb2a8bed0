#include <cmath>
#include <functional>
#include <mutex>

#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/SecureSessionData.h"
#include "quenwick/platform/Calendar.h"
#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/state/Analytics.h"
#include "tests/events/EventTest.h"
#include "tests/support/CommaLocale.h"
#include "tests/support/NestedValue.h"

namespace quenwick {
namespace {

using platform::Dictionary;
using platform::List;
using platform::URL;
using platform::Value;
using tests::sorted;
using Lines = std::vector<std::string>;

struct KindRow {
  std::function<void(BehaviorEventManager&)> offer;
  const char* event;
  const char* properties;
  const char* type = "track";
};

const std::vector<KindRow>& kinds() {
  static const auto& rows = *new std::vector<KindRow>{
      {[](auto& manager) {
         manager.productViewed(Dictionary{{"id", 42},
                                          {"title", "Böots"},
                                          {"price", 3.14159},
                                          {"url", "https://shop.example/42"},
                                          {"categories", List{Dictionary{{"id", 7}}}},
                                          {"meta", Dictionary{{"stock", 30'000}, {"ratio", 1.0}}}});
       },
       "product_viewed",
       R"({"id": "42", "title": "Böots", "price": "3.14", "url": "https://shop.example/42",
           "categories": [{"id": "7"}], "meta": {"stock": 30000, "ratio": 1.0}})"},
      {[](auto& manager) { manager.productViewed(ProductProperties{.id = "a", .price = 5000}); },
       "product_viewed", R"({"id": "a", "price": "5000.00", "meta": {}})"},
      {[](auto& manager) { manager.productAdded(Dictionary{{"id", "b"}}); }, "product_added",
       R"({"id": "b", "meta": {}})"},
      {[](auto& manager) { manager.productAdded(ProductProperties{.id = "c"}); }, "product_added",
       R"({"id": "c", "meta": {}})"},
      {[](auto& manager) { manager.productRemoved(Dictionary{{"id", "d"}}); }, "product_removed",
       R"({"id": "d", "meta": {}})"},
      {[](auto& manager) { manager.productRemoved(ProductProperties{.id = "e"}); },
       "product_removed", R"({"id": "e", "meta": {}})"},
      {[](auto& manager) { manager.categoryViewed(Dictionary{{"id", 1}, {"title", "Shoes"}}); },
       "category_viewed", R"({"id": "1", "title": "Shoes"})"},
      {[](auto& manager) { manager.categoryViewed(ProductCategory{.id = "f"}); }, "category_viewed",
       R"({"id": "f"})"},
      {[](auto& manager) {
         Dictionary line{{"id", 1}, {"quantity", 2}};
         manager.orderCompleted(
             Dictionary{{"id", 9}, {"revenue", 20}, {"products", List{std::move(line)}}});
       },
       "order_completed",
       R"({"id": "9", "revenue": "20.00", "products": [{"id": "1", "quantity": 2}]})"},
      {[](auto& manager) {
         manager.orderCompleted(OrderCompletedProperties{.products = {{.id = "g"}}});
       },
       "order_completed", R"({"products": [{"id": "g"}]})"},
      {[](auto& manager) {
         manager.logCustomEvent("signed_up", {{"age", 18446744073709551615U}, {"type", "x"}});
       },
       "signed_up", R"({"age": 18446744073709551615, "type": "x"})", "custom"},
      {[](auto& manager) {
         // Of what every event carries the library's stands before the host's.
         manager.sendEvent({{"type", "custom"},
                            {"event", "own"},
                            {"properties", Dictionary()},
                            {"user_id", "me"},
                            {"anonymous_id", 1},
                            {"timezone", "here"},
                            {"timestamp", 5},
                            {"channel", "mail"}});
       },
       "own", "{}", "custom"},
      {[](auto& manager) { manager.productSearched(Dictionary{{"query", "boots"}}); },
       "product_searched", R"({"query": "boots"})"},
      {[](auto& manager) {
         manager.productSearched(ProductSearchedProperties{
             .query = "hats", .url = URL::parse("https://shop.example/s?q=hats")});
       },
       "product_searched", R"({"query": "hats", "url": "https://shop.example/s?q=hats"})"},
  };
  return rows;
}

class EventManagerTest : public tests::EventTest {
 protected:
  void expectEveryKindArrives();

  /// Whether that arrived alone, with what every event and record carries.
  void expectOnly(Dictionary expected);
};

void EventManagerTest::expectEveryKindArrives() {
  Analytics::shared().setQWU("alice");
  Analytics::shared().setRulesPicKey("deadbeef");
  const Dictionary rulesKey{{"rules_pic_key", "deadbeef"}};
  for (const auto& [offer, event, properties, type] : kinds()) {
    SCOPED_TRACE(properties);
    Dictionary expected{{"type", type},
                        {"event", event},
                        {"properties", platform::JSONSerialization::parse(properties)},
                        {"user_id", "alice"},
                        {"channel", Dictionary{{"app", Dictionary{{"name", "sdk"}}}}}};
    if (event == std::string("order_completed")) {
      expected.set("context", Dictionary{{"campaign", rulesKey}});
    }
    offer(*manager_);
    expectOnly(expected);
  }
  manager_->identifyUser("bob");
  expectOnly({{"type", "identify"}, {"user_id", "bob"}});
}

void EventManagerTest::expectOnly(Dictionary expected) {
  ASSERT_TRUE(flush());
  auto events = service_.events();
  service_.sandbox().forgetEvents();
  ASSERT_EQ(events.size(), 1U);
  auto timestamp = *events[0].find("timestamp");
  EXPECT_NE(timestamp.as<std::int64_t>(), nullptr);
  expected.set("anonymous_id", Analytics::shared().anonymousID());
  expected.set("timezone", platform::TimeZone::currentIdentifier());
  expected.set("timestamp", timestamp);
  EXPECT_EQ(sorted(events[0]), sorted(expected));
}

TEST_F(EventManagerTest, EveryKindOfEventArrivesAsItIsDescribedInEveryLocale) {
  start();
  expectEveryKindArrives();
  // With a comma for the point and a point for thousands, as the host may set it.
  tests::TemporaryDirectory locales;
  ASSERT_TRUE(tests::setCommaLocale(locales.path()));
  expectEveryKindArrives();
}

TEST_F(EventManagerTest, BeforeItIsStartedEveryEventIsRefused) {
  EXPECT_FALSE(manager_->eventsEnabled());
  for (const auto& row : kinds()) row.offer(*manager_);
  manager_->identifyUser("bob");
  EXPECT_EQ(lines(), Lines(kinds().size() + 2, kNotEnabled));
  EXPECT_EQ(count(EventState::refusedNotEnabled), kinds().size() + 1);
  start();
  EXPECT_TRUE(manager_->eventsEnabled());
  ASSERT_TRUE(flush());
  EXPECT_TRUE(service_.receivedPaths().empty());
}

TEST_F(EventManagerTest, ASuccessIsOneLineAndAnIdentifiedUserIsNone) {
  start();
  manager_->productAdded(Dictionary{{"id", 1}});
  ASSERT_TRUE(flush());
  manager_->identifyUser("bob");
  ASSERT_TRUE(flush());
  EXPECT_EQ(lines(), Lines{"default: Event: product_added Status: Success"});
  startWith([](tests::Sender, Dictionary) -> tests::Sending { co_return {"accepted", "1"}; });
  manager_->sendEvent({{"event", 7}});
  ASSERT_TRUE(flush());
  EXPECT_EQ(lines().back(), "default: Event:  Status: Success") << "its name is no text";
}

TEST_F(EventManagerTest, WhatIsUnsoundIsRefusedInTheOrderOfTheCalls) {
  manager_->productViewed(Dictionary{{"id", 1}});
  start();
  manager_->productViewed(Dictionary{{"title", "no id"}});
  manager_->orderCompleted(Dictionary{{"products", List{}}});
  manager_->productSearched(Dictionary{{"query", 5}});
  manager_->logCustomEvent("deep", {{"list", tests::nested(100'000)}});
  manager_->logCustomEvent("vast", {{"text", std::string(200 << 20, 'x')}});
  manager_->sendEvent({{"event", "own"}, {"ratio", std::nan("")}});
  manager_->productViewed(ProductProperties{.id = "1", .price = std::nan("")});
  manager_->identifyUser("\xff");
  ASSERT_TRUE(flush());
  EXPECT_EQ(lines(),
            (Lines{kNotEnabled,
                   "error: Could not log event - id is missing. Must be either a String or Int.",
                   "error: Could not log event - at least 1 product must exist.",
                   "error: Could not log event - query is missing. Must be a String.",
                   "error: Could not log event - it is nested too deeply.",
                   "error: Could not log event - it is larger than 1 MiB.",
                   "error: Could not log event - ratio is not a finite number.",
                   "error: Could not log event - price is not a finite number.",
                   "error: Could not log event - user_id holds text that is not UTF-8."}));
  EXPECT_EQ(count(EventState::refusedUnsound), 8U);
  EXPECT_TRUE(service_.receivedPaths().empty());
}

TEST_F(EventManagerTest, AFailureIsToldWithItsPayloadAndItsError) {
  const struct {
    const char* fault;
    EventState state;
    const char* error;
  } kRows[] = {
      {"unauthorized", EventState::failedUnauthorized, "error: "},
      {"forbidden", EventState::failedStatus, "error: 403\n{\"error\":\"Refused on demand\"}"},
      {"server-error", EventState::failedStatus, "error: 500\nFailed on demand"},
      {"no-content", EventState::failedAnswer, "error: "},
      {"malformed", EventState::failedAnswer, "error: "},
      {"missing-fields", EventState::failedAnswer, "error: "},
      {"wrong-types", EventState::failedAnswer, "error: "},
      {"cut", EventState::failedTransport, "error: URLSessionTask failed with error: "},
      {"cut-during", EventState::failedTransport, "error: URLSessionTask failed with error: "},
  };
  start();
  for (const auto& row : kRows) {
    service_.setFaults("{\"kind\":\"" + std::string(row.fault) + "\"}");
    auto before = lines().size();
    auto countBefore = count(row.state);
    manager_->logCustomEvent("seen", {{"n", 1}});
    ASSERT_TRUE(flush()) << row.fault;
    manager_->identifyUser("bob");
    ASSERT_TRUE(flush()) << row.fault;
    EXPECT_EQ(count(row.state), countBefore + 2) << row.fault;
    auto told = lines();
    told.erase(told.begin(), told.begin() + static_cast<std::ptrdiff_t>(before));
    // The HTTP stack has a line of its own for a load that failed.
    bool isTransport = row.state == EventState::failedTransport;
    if (isTransport) {
      ASSERT_EQ(told.size(), 6U) << row.fault;
      EXPECT_EQ(told[0], told[2]) << row.fault;
      told = {told[1], told[2], told[4], told[5]};
    }
    ASSERT_EQ(told.size(), 4U) << row.fault;
    EXPECT_EQ(
        told[0],
        R"(default: Could not log event {"type":"custom","event":"seen","properties":{"n":1}}:)");
    EXPECT_TRUE(told[1].starts_with(row.error)) << told[1];
    EXPECT_EQ(told[2], "default: Could not identify user:");
    EXPECT_EQ(told[3], told[1]) << row.fault;
  }
  service_.setFaults("[]");
  manager_->logCustomEvent("seen", {});
  ASSERT_TRUE(flush());
  EXPECT_EQ(count(EventState::acknowledged), 1U);
}

/// Has another credential take the place of the one that was sent before the answer is looked at.
class OvertakenRequester : public BehavioralEventRequestable {
 public:
  explicit OvertakenRequester(std::shared_ptr<const BehavioralEventRequestable> real)
      : real_(std::move(real)) {}

  platform::Task<BehavioralEventContainer> sendEvent(Dictionary payload) const override {
    return overtaken(real_->sendEvent(std::move(payload)));
  }
  platform::Task<BehavioralEventContainer> identifyUser(Dictionary payload) const override {
    return overtaken(real_->identifyUser(std::move(payload)));
  }
  const TimestampGenerator& timestampGenerator() const override {
    return real_->timestampGenerator();
  }

 private:
  static platform::Task<BehavioralEventContainer> overtaken(
      platform::Task<BehavioralEventContainer> sending) {
    std::exception_ptr failure;
    try {
      co_return co_await sending;
    } catch (...) {
      failure = std::current_exception();
    }
    AuthenticationKeychain::standard().set("b3RoZXI6c2VjcmV0",
                                           rawValue(SecureSessionData::behaviorAPIToken));
    std::rethrow_exception(failure);
  }

  std::shared_ptr<const BehavioralEventRequestable> real_;
};

TEST_F(EventManagerTest, ACredentialIsHiddenThoughAnotherHasTakenItsPlaceSince) {
  auto key = rawValue(SecureSessionData::behaviorAPIToken);
  auto credential = *AuthenticationKeychain::standard().string(key);
  auto real = BehavioralEventRepository(service_.endpoint()).api();
  manager_->start(std::make_shared<const BehavioralEventRepository>(
      std::make_shared<OvertakenRequester>(real)));
  service_.setFaults(R"([{"status": 400, "body": "no )" + credential + R"("}])");
  for (bool isIdentification : {false, true}) {
    AuthenticationKeychain::standard().set(std::string_view(credential), key);
    isIdentification ? manager_->identifyUser("bob") : manager_->logCustomEvent("seen", {});
    ASSERT_TRUE(flush());
    EXPECT_EQ(lines().back(), "error: 400\nno …");
  }
}

TEST_F(EventManagerTest, WithoutACredentialNothingIsSentAndALineSaysSo) {
  start();
  AuthenticationKeychain::standard().removeObject(rawValue(SecureSessionData::behaviorAPIToken));
  manager_->sendEvent({{"type", "own"}});
  ASSERT_TRUE(flush());
  manager_->identifyUser("bob");
  ASSERT_TRUE(flush());
  EXPECT_EQ(
      lines(),
      (Lines{R"(default: Could not log event {"type":"own"}:)", "error: No API key is configured",
             "default: Could not identify user:", "error: No API key is configured"}));
  EXPECT_EQ(count(EventState::failedNoCredential), 2U);
  EXPECT_TRUE(service_.receivedPaths().empty());
}

TEST_F(EventManagerTest, AnOrderHasTheRulesKeyOfItsCall) {
  start();
  Analytics::shared().setRulesPicKey("before");
  holdUp();
  manager_->orderCompleted(OrderCompletedProperties{.products = {{.id = "1"}}});
  manager_->orderCompleted(Dictionary{{"products", List{Dictionary{{"id", "2"}}}}});
  Analytics::shared().setRulesPicKey("after");
  ASSERT_TRUE(log_->waitUntilHolding());
  log_->letGo();
  ASSERT_TRUE(flush());
  ASSERT_EQ(service_.events().size(), 2U);
  for (const auto& event : service_.events()) {
    EXPECT_EQ(*event.find("context"),
              Value(Dictionary{{"campaign", Dictionary{{"rules_pic_key", "before"}}}}));
  }
}

TEST_F(EventManagerTest, IsGivenTheSharedSessionAndNoEmptyRepository) {
  EXPECT_EQ(BehaviorEventManager().session(), platform::URLSession::shared());
  manager_->start(nullptr);
  EXPECT_FALSE(manager_->eventsEnabled());
  start();
  manager_->start(nullptr);
  manager_->logCustomEvent("seen", {});
  ASSERT_TRUE(flush());
  EXPECT_EQ(count(EventState::acknowledged), 1U);
}

TEST_F(EventManagerTest, ASecondStartSendsWhatFollowsToTheNewEndpoint) {
  service_.expectRefusals();  // of the path: nothing is served at the other endpoint
  start();
  auto first = manager_->repository();
  manager_->logCustomEvent("first", {});
  ASSERT_TRUE(flush());
  manager_->start(*URL::parse("https://events.shop.example/v2/events"));
  EXPECT_NE(manager_->repository(), first);
  manager_->logCustomEvent("second", {});
  ASSERT_TRUE(flush());
  EXPECT_EQ(service_.receivedPaths(), (Lines{"/v1/events", "/v2/events"}));
  EXPECT_EQ(service_.refusals().size(), 1U);
}

TEST_F(EventManagerTest, EventsLeaveInTheOrderInWhichTheyWereOffered) {
  std::mutex mutex;
  Lines sent;
  startWith([&](const tests::Sender& real, Dictionary payload) {
    std::lock_guard lock(mutex);
    sent.push_back(*payload.find("event")->as<std::string>());
    return real->sendEvent(std::move(payload));
  });
  Lines offered;
  for (int i = 0; i < 500; ++i) {
    offered.push_back("event " + std::to_string(i));
    manager_->logCustomEvent(offered.back(), {});
  }
  ASSERT_TRUE(flush());
  EXPECT_EQ(sent, offered);
  EXPECT_EQ(service_.events().size(), offered.size());
}

TEST_F(EventManagerTest, OnceItAllHasEndedNothingThatWaitsIsSent) {
  std::stop_source end;
  manager_ = std::make_unique<BehaviorEventManager>(platform::URLSession::make(), scheduler_,
                                                    end.get_token());
  start();
  manager_->productSearched(Dictionary{{"query", "boots"}});
  settle();
  holdUp();
  manager_->logCustomEvent("late", {});
  ASSERT_TRUE(log_->waitUntilHolding());
  end.request_stop();
  log_->letGo();
  scheduler_->advance(std::chrono::seconds(1));
  ASSERT_TRUE(flush());
  EXPECT_EQ(count(EventState::droppedAtEnd), 2U);
  EXPECT_TRUE(service_.receivedPaths().empty());
}

TEST_F(EventManagerTest, WhatWasTakenIsSentWhenTheManagerHasGone) {
  start();
  for (int i = 0; i < 100; ++i) manager_->logCustomEvent("last", {});
  manager_.reset();
  EXPECT_TRUE(log_->waitFor("Event: last Status: Success", 100));
  EXPECT_EQ(service_.events().size(), 100U);
}

}  // namespace
}  // namespace quenwick
