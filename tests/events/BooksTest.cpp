#include <atomic>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <stdexcept>
#include <thread>

#include "tests/events/EventTest.h"

namespace quenwick {
namespace {

using platform::Dictionary;

class BooksTest : public tests::EventTest {};

/// Whether every event that was offered is in exactly one place.
bool balances(const EventCounts& counts) {
  return counts.offered == std::accumulate(counts.in.begin(), counts.in.end(), std::uint64_t{0});
}

/// What is wrong between the closed books, the events that must have arrived and those that did;
/// empty where all is well.
std::vector<std::string> differences(const EventCounts& counts, const std::set<std::string>& sent,
                                     const std::vector<std::string>& arrived) {
  std::vector<std::string> found;
  if (!balances(counts)) found.emplace_back("the books do not balance");
  if (counts[EventState::waiting] + counts[EventState::inFlight] > 0) {
    found.emplace_back("an event has not ended");
  }
  if (counts[EventState::acknowledged] != arrived.size()) {
    found.emplace_back("the service and the books differ");
  }
  std::map<std::string, int> times;
  for (const auto& name : arrived) ++times[name];
  for (const auto& name : sent) {
    if (times[name] != 1) found.push_back(name + " arrived " + std::to_string(times[name]) + "x");
  }
  for (const auto& [name, count] : times) {
    if (!sent.contains(name)) found.push_back(name + " was never to arrive");
  }
  return found;
}

std::vector<std::string> namesOf(const std::vector<Dictionary>& events) {
  std::vector<std::string> names;
  names.reserve(events.size());
  for (const auto& event : events) names.push_back(*event.find("event")->as<std::string>());
  return names;
}

TEST_F(BooksTest, BalanceAtEveryMomentAndMatchTheServiceInTheEnd) {
  constexpr int kEach = 700;
  start();
  std::atomic<bool> isOver = false;
  std::atomic<int> looks = 0;
  std::atomic<bool> hasBalanced = true;
  std::thread auditor([&] {
    std::mt19937 random(7);
    while (!isOver) {
      if (!balances(manager_->counts())) hasBalanced = false;
      ++looks;
      for (auto spins = random() % 2000; spins > 0; --spins)
        std::atomic_signal_fence(std::memory_order_seq_cst);
    }
  });
  std::set<std::string> sent;
  for (int host = 0; host < 3; ++host) {
    for (int i = 0; i < kEach; ++i) sent.insert(std::to_string(host) + "." + std::to_string(i));
  }
  std::vector<std::thread> hosts;
  hosts.reserve(3);
  for (int host = 0; host < 3; ++host) {
    hosts.emplace_back([this, host] {
      for (int i = 0; i < kEach; ++i) {
        manager_->logCustomEvent(std::to_string(host) + "." + std::to_string(i), {{"i", i}});
        if (i % 7 == 0) manager_->productViewed(Dictionary{{"title", "no id"}});
        if (i % 5 == 0) manager_->productSearched(Dictionary{{"query", "never quiet"}});
      }
    });
  }
  for (auto& host : hosts) host.join();
  settle();
  manager_->productSearched(Dictionary{{"query", "the last"}});
  sent.insert("product_searched");
  ASSERT_TRUE(flush());
  isOver = true;
  auditor.join();

  EXPECT_TRUE(hasBalanced);
  EXPECT_GT(looks, 100);
  auto counts = manager_->counts();
  auto arrived = namesOf(service_.events());
  EXPECT_EQ(differences(counts, sent, arrived), std::vector<std::string>());
  EXPECT_EQ(counts[EventState::refusedUnsound], 3 * kEach / 7 + 1U);
  EXPECT_EQ(counts[EventState::droppedSuperseded], 3 * kEach / 5);
}

using Sending = platform::Task<BehavioralEventContainer>;
using Sender = std::shared_ptr<const BehavioralEventRequestable>;

/// Stands on the way of events from the pipeline to the wire, and does one of them wrong.
class FaultyRequester : public BehavioralEventRequestable {
 public:
  /// What becomes of the event.
  using Fault = Sending (*)(Sender, Dictionary payload);

  FaultyRequester(Sender real, Fault fault) : real_(std::move(real)), fault_(fault) {}

  Sending sendEvent(Dictionary payload) const override {
    bool isTheOne = *payload.find("event") == platform::Value("event 7");
    return isTheOne ? fault_(real_, std::move(payload)) : real_->sendEvent(std::move(payload));
  }
  Sending identifyUser(Dictionary payload) const override {
    return real_->identifyUser(std::move(payload));
  }
  const TimestampGenerator& timestampGenerator() const override {
    return real_->timestampGenerator();
  }

 private:
  Sender real_;
  Fault fault_;
};

Sending swallowed(Sender, Dictionary) { co_return {"accepted", "1"}; }

Sending sentTwice(Sender real, Dictionary payload) {
  co_await real->sendEvent(payload);
  co_return co_await real->sendEvent(std::move(payload));
}

Sending sentAsAnother(Sender real, Dictionary payload) {
  payload.set("event", "event 8");
  co_return co_await real->sendEvent(std::move(payload));
}

Sending withoutItsAnswer(Sender real, Dictionary payload) {
  co_await real->sendEvent(std::move(payload));
  throw std::runtime_error("the answer is lost");
}

TEST_F(BooksTest, AnEventThatGoesAstrayOnItsWayIsFound) {
  using Found = std::vector<std::string>;
  const std::string differ = "the service and the books differ";
  const struct {
    FaultyRequester::Fault fault;
    Found found;
  } kRows[] = {
      {swallowed, {differ, "event 7 arrived 0x"}},
      {sentTwice, {differ, "event 7 arrived 2x"}},
      {sentAsAnother, {"event 7 arrived 0x", "event 8 arrived 2x"}},
      {withoutItsAnswer, {differ}},
  };
  std::set<std::string> sent;
  for (int i = 0; i < 20; ++i) sent.insert("event " + std::to_string(i));
  for (const auto& [fault, found] : kRows) {
    service_.sandbox().forgetEvents();
    manager_ = std::make_unique<BehaviorEventManager>();
    auto real = BehavioralEventRepository(service_.endpoint()).api();
    manager_->start(std::make_shared<const BehavioralEventRepository>(
        std::make_shared<FaultyRequester>(real, fault)));
    for (const auto& name : sent) manager_->logCustomEvent(name, {});
    ASSERT_TRUE(flush());
    EXPECT_EQ(differences(manager_->counts(), sent, namesOf(service_.events())), found);
  }
}

TEST_F(BooksTest, AnEventThatTheServiceAcknowledgesAndLosesIsFound) {
  service_.setFaults(
      R"([{"delay": 1, "times": 3},
          {"status": 200, "json": {"message": "accepted", "request_id": "1"}, "times": 1}])");
  start();
  std::set<std::string> sent;
  for (int i = 0; i < 20; ++i) sent.insert("event " + std::to_string(i));
  for (const auto& name : sent) manager_->logCustomEvent(name, {});
  ASSERT_TRUE(flush());
  EXPECT_EQ(count(EventState::acknowledged), 20U);
  EXPECT_EQ(differences(manager_->counts(), sent, namesOf(service_.events())).size(), 2U);
}

TEST_F(BooksTest, AnEventThatHasNotEndedIsFound) {
  service_.setFaults(R"([{"delay": 3600000, "times": 1}])");
  start();
  manager_->logCustomEvent("one", {});
  manager_->logCustomEvent("another", {});
  EXPECT_TRUE(log_->waitFor(" Status: Success"));
  EXPECT_EQ(
      differences(manager_->counts(), {"one", "another"}, namesOf(service_.events())),
      (std::vector<std::string>{"an event has not ended", "the service and the books differ"}));
}

TEST_F(BooksTest, FailuresAreCountedAsOftenAsTheServiceMadeThem) {
  service_.setFaults(R"([{"kind": "server-error", "times": 30}, {"kind": "malformed", "times": 20},
                         {"kind": "cut-during", "times": 10}, {"kind": "unauthorized", "times": 5}])");
  start();
  for (int i = 0; i < 200; ++i) manager_->logCustomEvent("event", {{"i", i}});
  ASSERT_TRUE(flush());
  auto counts = manager_->counts();
  EXPECT_EQ(counts[EventState::failedStatus], 30U);
  EXPECT_EQ(counts[EventState::failedAnswer], 20U);
  EXPECT_EQ(counts[EventState::failedTransport], 10U);
  EXPECT_EQ(counts[EventState::failedUnauthorized], 5U);
  EXPECT_EQ(counts[EventState::acknowledged], 135U);
  EXPECT_TRUE(balances(counts));
  EXPECT_EQ(service_.events().size(), 135U);
  EXPECT_EQ(log_->count("default: Could not log event {"), 65);
}

TEST_F(BooksTest, WhatThereIsNoRoomForIsDroppedAndToldOneByOne) {
  constexpr int kOffered = 250;
  service_.setFaults(R"({"delay": 3600000})");
  start();
  for (int i = 0; i < kOffered; ++i) {
    manager_->logCustomEvent("big", {{"text", std::string(1'000'000, 'x')}});
    if (i % 50 == 0) settle();
  }
  settle();
  auto counts = manager_->counts();
  auto dropped = counts[EventState::droppedOverflow];
  EXPECT_GT(dropped, 0U);
  EXPECT_LE(counts[EventState::waiting], 135U);
  EXPECT_EQ(log_->count("error: Could not log event - too many events are waiting."),
            static_cast<std::ptrdiff_t>(dropped));
  EXPECT_FALSE(manager_->flush(std::chrono::milliseconds(1)));
  service_.end();
  ASSERT_TRUE(flush());
  counts = manager_->counts();
  EXPECT_TRUE(balances(counts));
  EXPECT_EQ(counts[EventState::droppedOverflow], dropped);
  EXPECT_EQ(counts[EventState::failedTransport] + dropped, std::uint64_t{kOffered});
}

}  // namespace
}  // namespace quenwick
