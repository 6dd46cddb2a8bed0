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
  std::set<std::string> sent{"product_searched"};
  std::vector<std::thread> hosts;
  for (int host = 0; host < 3; ++host) {
    std::vector<std::string> names;
    for (int i = 0; i < kEach; ++i) names.push_back(std::to_string(host) + "." + std::to_string(i));
    sent.insert(names.begin(), names.end());
    hosts.emplace_back([this, names] {
      for (int i = 0; i < kEach; ++i) {
        manager_->logCustomEvent(names[static_cast<std::size_t>(i)], {{"i", i}});
        if (i % 7 == 0) manager_->productViewed(Dictionary{{"title", "no id"}});
        if (i % 5 == 0) manager_->productSearched(Dictionary{{"query", "never quiet"}});
      }
    });
  }
  for (auto& host : hosts) host.join();
  settle();
  manager_->productSearched(Dictionary{{"query", "the last"}});
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

using tests::Sender;
using tests::Sending;

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
    Sending (*fault)(Sender, Dictionary payload);
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
    startWith([fault](Sender real, Dictionary payload) {
      bool isTheOne = *payload.find("event") == platform::Value("event 7");
      return isTheOne ? fault(real, std::move(payload)) : real->sendEvent(std::move(payload));
    });
    for (const auto& name : sent) manager_->logCustomEvent(name, {});
    ASSERT_TRUE(flush());
    EXPECT_EQ(differences(manager_->counts(), sent, namesOf(service_.events())), found);
  }
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
