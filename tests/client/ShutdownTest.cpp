#include <filesystem>

#include "tests/client/ClientHost.h"

namespace quenwick::tests {
namespace {

using namespace std::chrono_literals;

using Link = std::optional<std::string>;

constexpr auto kLink = "https://l.example/p/go/1f";
constexpr auto kSlow = "https://l.example/p/go/3";

class ShutdownTest : public ClientHost {};

TEST_F(ShutdownTest, BeforeAnyUseItMakesNothingAndEndsTheLibrary) {
  EXPECT_TRUE(QWClient::shutdown(std::chrono::nanoseconds::max()));
  EXPECT_TRUE(std::filesystem::is_empty(home_.path()));
  EXPECT_FALSE(configure(configuration()));
  EXPECT_FALSE(QWClient::canHandleURL(kLink));
  EXPECT_TRUE(QWClient::shared());
  EXPECT_TRUE(std::filesystem::is_empty(home_.path()));
}

TEST_F(ShutdownTest, EndsPublishersWhoseReceiversAreReleased) {
  auto token = std::make_shared<int>();
  Collected<Link> published;
  auto publisher = QWClient::storedDeeplinkPublisher();
  auto receive = [token, &published](const Link& link) { published.add(link); };
  auto subscription = publisher.subscribe(receive);
  EXPECT_EQ(published.wait(1).size(), 1U);
  QWClient::registerDeeplinkDomains({"l.example"});
  QWClient::handleUniversalLink(kSlow);
  EXPECT_TRUE(QWClient::shutdown(60s));
  auto late = publisher.subscribe(receive);
  EXPECT_EQ(token.use_count(), 2) << "what the test itself holds";
  settle();
  EXPECT_EQ(published.wait(0).size(), 1U);
}

TEST_F(ShutdownTest, ReleasesTheHandlersOfEveryClient) {
  auto token = std::make_shared<int>();
  auto handler = [token](const auto&) {};
  auto first = QWClient::shared();
  QWClient::start({.shouldRegisterForBehaviorEvents = false, .deeplinkHandler = handler});
  QWClient::setShared(std::make_shared<QWClient>());
  QWClient::start({.shouldRegisterForBehaviorEvents = false, .deeplinkHandler = handler});
  QWClient::startWithResult({.result = [token](const auto&, const auto&) {}});
  QWClient::setEventsEnabledHandler([token] {});
  QWClient::resolve(kSlow, handler);
  EXPECT_TRUE(QWClient::shutdown(60s));
  // A resolution that has just ended lets go of its own a moment later.
  auto end = std::chrono::steady_clock::now() + 10s;
  while (token.use_count() > 2 && std::chrono::steady_clock::now() < end) settle();
  EXPECT_EQ(token.use_count(), 2) << "the token and `handler`";
}

/// A view that is still there when the library ends works on in the window toolkit's thread.
TEST_F(ShutdownTest, LeavesAViewsWorkOnTheThreadOfItsToolkit) {
  struct Toolkit : platform::Executor {
    void post(platform::Work) override { ++posted; }
    int posted = 0;
  };
  auto toolkit = std::make_shared<Toolkit>();
  platform::MainActor::setToolkitExecutor(toolkit);
  auto own = configuration();
  own.mainExecutor = [](const auto&) { FAIL() << "the host's, after the end"; };
  ASSERT_TRUE(configure(own));
  EXPECT_TRUE(QWClient::shutdown(60s));
  platform::MainActor::post([] {});
  EXPECT_EQ(toolkit->posted, 1);
  platform::MainActor::setToolkitExecutor(nullptr);
}

TEST_F(ShutdownTest, EveryCallAfterItIsRefusedWithALine) {
  QWClient::addHandleablePaths({{"l.example", {"."}}});
  auto client = QWClient::shared();
  EXPECT_TRUE(QWClient::shutdown(60s));
  testing::internal::CaptureStderr();
  EXPECT_TRUE(QWClient::handleablePaths().empty());
  EXPECT_EQ(QWClient::storedDeeplink(), std::nullopt);
  EXPECT_FALSE(QWClient::paste({}));
  EXPECT_FALSE(QWClient::handleUniversalLink(UISceneConnectionOptions{}));
  QWClient::setShared(std::make_shared<QWClient>());
  EXPECT_FALSE(QWClient::flush(1s));
  auto late = QWClient::resolve(kLink).get();
  EXPECT_TRUE(std::holds_alternative<DeeplinkResolutionError>(late));
  auto lines = testing::internal::GetCapturedStderr();
  EXPECT_EQ(QWClient::shared(), client);
  EXPECT_EQ(std::ranges::count(lines, '\n'), 8) << lines;
}

TEST_F(ShutdownTest, DurationsWithoutAnEndAreNoFault) {
  constexpr auto kForever = std::chrono::nanoseconds::max();
  constexpr auto kNever = std::chrono::nanoseconds::min();
  auto task = QWClient::registerForBehaviors("key");
  ASSERT_TRUE(task);
  EXPECT_TRUE(task->waitFor(kForever));
  auto resolved = QWClient::resolve(kLink, {.deadline = kForever}).get();
  EXPECT_TRUE(std::holds_alternative<std::string>(resolved));
  auto late = QWClient::resolve(kSlow, {.deadline = kNever}).get();
  EXPECT_TRUE(std::holds_alternative<DeeplinkResolutionError>(late));
  EXPECT_TRUE(QWClient::flush(kForever));
  QWClient::flush(kNever);
  EXPECT_TRUE(QWClient::shutdown(kForever));
}

TEST_F(ShutdownTest, AHandlerMayShutTheLibraryDownWhileAnotherThreadDoes) {
  std::future<bool> other;
  QWClient::start({.deeplinkDomains = {"l.example"},
                   .shouldRegisterForBehaviorEvents = false,
                   .deeplinkHandler = [&](const auto&) {
                     other = std::async(std::launch::async, QWClient::shutdown, 60s);
                     results_.add(QWClient::shutdown(60s) ? "ended" : "not ended");
                   }});
  QWClient::handleUniversalLink(kLink);
  EXPECT_EQ(results_.wait(1), std::vector<std::string>{"ended"});
  EXPECT_TRUE(other.get());
}

}  // namespace
}  // namespace quenwick::tests
