#include <atomic>
#include <stdexcept>

#include "quenwick/platform/MainActor.h"
#include "tests/events/EventTest.h"
#include "tests/support/IdlePool.h"

namespace quenwick {
namespace {

using namespace std::chrono_literals;
using platform::Dictionary;

class SearchTest : public tests::EventTest {
 protected:
  SearchTest() { start(); }

  void search(const std::string& query) {
    manager_->productSearched(ProductSearchedProperties{.query = query});
  }

  /// What was searched for, as it arrived.
  std::vector<std::string> arrived() {
    std::vector<std::string> queries;
    for (const auto& event : service_.events()) {
      const auto& properties = *event.find("properties")->as<Dictionary>();
      queries.push_back(*properties.find("query")->as<std::string>());
    }
    return queries;
  }

  bool awaitSearches(std::ptrdiff_t count) {
    return log_->waitFor("Event: product_searched Status: Success", count);
  }
};

using Queries = std::vector<std::string>;

TEST_F(SearchTest, FiveQuickSearchesArriveAsTheLastHalfASecondAfterIt) {
  for (int i = 1; i <= 5; ++i) {
    if (i > 1) scheduler_->advance(100ms);
    search("q" + std::to_string(i));
  }
  settle();
  EXPECT_EQ(count(EventState::droppedSuperseded), 4U);
  scheduler_->advance(499ms);
  settle();
  EXPECT_EQ(count(EventState::inFlight) + count(EventState::acknowledged), 0U);
  EXPECT_TRUE(arrived().empty());
  scheduler_->advance(1ms);
  ASSERT_TRUE(awaitSearches(1));
  EXPECT_EQ(arrived(), Queries{"q5"});
  EXPECT_EQ(count(EventState::waiting), 0U);
}

TEST_F(SearchTest, SearchesThatAreFurtherApartAllArrive) {
  search("first");
  settle();
  scheduler_->advance(600ms);
  search("second");
  settle();
  scheduler_->advance(600ms);
  ASSERT_TRUE(awaitSearches(2));
  EXPECT_EQ(arrived().size(), 2U);
}

TEST_F(SearchTest, QuickSearchesArriveAsOneHoweverLateTheirTurns) {
  for (int i = 1; i <= 5; ++i) {
    if (i > 1) scheduler_->advance(100ms);
    search("q" + std::to_string(i));
    holdUp();
  }
  scheduler_->advance(300ms);  // more than half a second from the first three
  for (int i = 1; i <= 5; ++i) {
    ASSERT_TRUE(log_->waitUntilHolding());
    scheduler_->advance(0ms);
    log_->letGo();
  }
  settle();
  EXPECT_EQ(count(EventState::droppedSuperseded), 4U);
  scheduler_->advance(200ms);
  ASSERT_TRUE(awaitSearches(1));
  EXPECT_EQ(arrived(), Queries{"q5"});
}

TEST_F(SearchTest, SearchesThatAreFurtherApartAllArriveHoweverLateTheirTurns) {
  holdUp();
  search("first");
  scheduler_->advance(600ms);
  search("second");
  ASSERT_TRUE(log_->waitUntilHolding());
  log_->letGo();
  settle();
  scheduler_->advance(0ms);
  ASSERT_TRUE(awaitSearches(1));
  EXPECT_EQ(arrived(), Queries{"first"});
  scheduler_->advance(500ms);
  ASSERT_TRUE(awaitSearches(2));
  EXPECT_EQ(arrived(), (Queries{"first", "second"}));
}

TEST_F(SearchTest, AnUnsoundSearchIsWaitedForAndThenLeavesTheOneThatWaits) {
  search("right");
  scheduler_->advance(300ms);
  holdUp();
  manager_->productSearched(Dictionary{{"query", 7}});
  ASSERT_TRUE(log_->waitUntilHolding());
  scheduler_->advance(200ms);
  log_->letGo();
  settle();
  scheduler_->advance(0ms);
  ASSERT_TRUE(awaitSearches(1));
  EXPECT_EQ(arrived(), Queries{"right"});
}

/// Takes no work the first time.
class ThrowingOnce : public platform::Executor {
 public:
  void post(platform::Work work) override {
    if (!hasThrown_.exchange(true)) throw std::runtime_error("no main loop yet");
    platform::pool().post(std::move(work));
  }

 private:
  std::atomic<bool> hasThrown_ = false;
};

TEST_F(SearchTest, AMainLoopThatFailsOnceLosesNoSearch) {
  platform::MainActor::setExecutor(std::make_shared<ThrowingOnce>());
  BehaviorEventManager manager;
  manager.start(service_.endpoint());
  manager.productSearched(Dictionary{{"query", "first"}});
  ASSERT_TRUE(log_->waitFor("no main loop yet"));
  manager.productSearched(Dictionary{{"query", "second"}});
  ASSERT_TRUE(awaitSearches(2));
  EXPECT_EQ(arrived().size(), 2U);
}

TEST_F(SearchTest, AFlushSendsAWaitingSearchAtOnceAndOnce) {
  search("boots");
  ASSERT_TRUE(flush());
  EXPECT_EQ(arrived(), Queries{"boots"});
  scheduler_->advance(10s);
  ASSERT_TRUE(flush());
  EXPECT_EQ(arrived().size(), 1U);
}

TEST_F(SearchTest, ASearchIsDroppedWithItsManager) {
  search("boots");
  settle();
  manager_ = std::make_unique<BehaviorEventManager>(platform::URLSession::make(), scheduler_);
  start();
  scheduler_->advance(10s);
  tests::untilPoolIsIdle();
  manager_->logCustomEvent("later", {});
  ASSERT_TRUE(flush());
  EXPECT_EQ(service_.receivedPaths().size(), 1U);
}

}  // namespace
}  // namespace quenwick
