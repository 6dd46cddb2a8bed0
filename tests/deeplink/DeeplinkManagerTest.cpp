#include "quenwick/deeplink/DeeplinkManager.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <thread>

#include "quenwick/deeplink/DeeplinkResolutionError.h"
#include "quenwick/deeplink/URLSessionRedirectDelegate.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/UserDefaults.h"
#include "quenwick/state/Analytics.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SandboxService.h"

namespace quenwick {
namespace {

using platform::URL;

constexpr auto kScenario = R"({
  "links": [
    {"link": "https://l.example/p/go/1f", "chain": [
      {"status": 302, "to": "https://hop.example/p/rp/deadbeef/url?qw_u=first"},
      {"status": 307, "to": "/p/go/00ff?qw_u=second"},
      {"status": 301, "to": "https://shop.example/shoes?qw_u=third&size=42"}]},
    {"link": "https://l.example/p/rpm/2/url", "chain": [
      {"status": 302, "to": "https://shop.example/a?qw_u=halted&qw_hr=1"},
      {"status": 302, "to": "https://shop.example/never?qw_u=never"}]},
    {"link": "https://l.example/p/cp/x/c", "chain": [{"status": 302, "to": "shopapp://product/42?qw_u=app"}]},
    {"link": "https://l.example/p/go/2", "chain": [
      {"status": 302, "to": "https://shop.example/gone?qw_u=kept"}], "end": {"status": 404, "body": "no such offer"}},
    {"link": "https://l.example/p/go/3", "chain": [{"status": 302, "to": "https://shop.example/bytes"}],
     "end": {"status": 500, "bodyBase64": "//4="}},
    {"link": "https://l.example/p/go/4", "chain": [{"status": 302, "to": "https://l.example/p/go/4"}]},
    {"link": "https://l.example/p/go/5", "chain": [{"status": 302, "to": "https://shop.example/slow?qw_u=slow"}],
     "end": {"status": 200, "delay": 60000}},
    {"link": "https://l.example/p/go/6", "chain": [
      {"status": 302, "to": "https://shop.example/b?next=/p/go/abc"}]}
  ]})";

class DeeplinkManagerTest : public testing::Test {
 protected:
  std::shared_ptr<platform::URLSession> session() {
    return platform::URLSession::make(service_.configuration(),
                                      URLSessionRedirectDelegate::shared());
  }
  std::string resolve(const char* link) {
    return platform::wait(DeeplinkManager(URL::parse(link).value(), session()).resolve())
        .absoluteString();
  }
  static DeeplinkResolutionError failureOf(const std::function<void()>& resolution) {
    try {
      resolution();
    } catch (const DeeplinkResolutionError& error) {
      return error;
    }
    ADD_FAILURE() << "it resolved";
    return DeeplinkResolutionError::unknown();
  }
  DeeplinkResolutionError failure(const char* link) {
    return failureOf([&] { resolve(link); });
  }
  Analytics& analytics() { return Analytics::shared(); }

  std::shared_ptr<tests::RecordingLog> log_ = tests::RecordingLog::install();
  tests::SandboxService service_{kScenario};
};

using Lines = std::vector<std::string>;
using Text = std::optional<std::string>;

TEST_F(DeeplinkManagerTest, TheChainsEndIsTheDestinationAndWhatItCarriedIsOnDisk) {
  std::vector<Text> seen;
  auto subscription =
      analytics().qwuDeeplinkChanges().subscribe([&](const auto& v) { seen.push_back(v); });
  EXPECT_EQ(resolve("http://l.example/p/go/1f"), "https://shop.example/shoes?qw_u=third&size=42");
  EXPECT_EQ(seen, (std::vector<Text>{Text(), "first", "second", "third"}));
  EXPECT_EQ(analytics().rulesPicKey(), "00ff");
  auto& onDisk = platform::UserDefaults::make(
      std::filesystem::path(platform::hostConfiguration().home.value()) / "com.example.tests" /
      "preferences.sqlite");
  EXPECT_EQ(onDisk.object("com.quenwick.sdk.qwuDeeplink"), platform::DefaultsValue("third"));
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(DeeplinkManagerTest, RequestsGoOverHTTPSWithTheLibrarysUserAgentAlone) {
  resolve("http://l.example/p/go/1f");
  auto requests = service_.sandbox().requests();
  EXPECT_EQ(requests.find("\"scheme\":\"http\""), requests.npos);
  EXPECT_NE(requests.find("\"User-Agent\":\"QuenwickSDK/"), requests.npos) << requests;
  EXPECT_EQ(requests.find("Accept-Language"), requests.npos);
  EXPECT_EQ(service_.received().size(), 4U);
}

TEST_F(DeeplinkManagerTest, ATargetMayEndTheChainBeforeItself) {
  EXPECT_EQ(resolve("https://l.example/p/rpm/2/url"), "https://l.example/p/rpm/2/url");
  EXPECT_EQ(service_.received(), (Lines{"GET l.example/p/rpm/2/url"}));
  EXPECT_EQ(analytics().qwuDeeplink(), "halted");
}

TEST_F(DeeplinkManagerTest, TheRulesKeyIsInATargetsPathAlone) {
  EXPECT_EQ(resolve("https://l.example/p/go/6"), "https://shop.example/b?next=/p/go/abc");
  EXPECT_EQ(analytics().rulesPicKey(), std::nullopt);
}

TEST_F(DeeplinkManagerTest, WithoutASessionItsOwnChecksCertificates) {
  auto link = "https://127.0.0.1:" + std::to_string(service_.sandbox().port()) + "/p/go/1f";
  auto destination = platform::wait(DeeplinkManager(URL::parse(link).value()).resolve());
  EXPECT_EQ(destination.absoluteString(), link);
  EXPECT_TRUE(service_.received().empty());
}

TEST_F(DeeplinkManagerTest, AURLThatCannotBeLoadedIsTheDestination) {
  EXPECT_EQ(resolve("https://l.example/p/cp/x/c"), "shopapp://product/42?qw_u=app");
  EXPECT_EQ(analytics().qwuDeeplink(), "app");
  EXPECT_EQ(resolve("https://l.example/p/go/4"), "https://l.example/p/go/4") << "a loop";
  EXPECT_EQ(resolve("shop.example/p/go/1"), "https:shop.example/p/go/1");
  EXPECT_TRUE(log_->lines().empty());
}

TEST_F(DeeplinkManagerTest, AnErrorStatusIsAFailureWithTheBodyAndTheLink) {
  auto error = failure("http://l.example/p/go/2").nsError();
  EXPECT_EQ(error.domain(), "com.quenwick.error");
  EXPECT_EQ(error.code(), -1);
  EXPECT_EQ(error.userInfo(),
            (platform::UserInfo{
                {std::string(platform::NSLocalizedFailureReasonErrorKey), "no such offer"},
                {std::string(platform::NSURLErrorKey), "https://l.example/p/go/2"}}));
  EXPECT_EQ(log_->lines(), (Lines{"debug: Could not resolve deeplink", "error: no such offer"}));
  EXPECT_EQ(analytics().qwuDeeplink(), "kept") << "what the chain carried stays";
}

TEST_F(DeeplinkManagerTest, ABodyThatIsNoTextLeavesTheMessageEmpty) {
  auto error = failure("https://l.example/p/go/3");
  EXPECT_EQ(std::get<DeeplinkResolutionError::Failure>(error.value()),
            (DeeplinkResolutionError::Failure{"https://l.example/p/go/3", ""}));
  EXPECT_EQ(log_->lines(), (Lines{"debug: Could not resolve deeplink"}));
}

TEST_F(DeeplinkManagerTest, AnAnswerWithoutURLOrHTTPIsUnknown) {
  auto link = URL::parse("https://l.example/x").value();
  auto http = std::make_shared<platform::HTTPURLResponse>();
  http->statusCode = 200;
  for (std::shared_ptr<platform::URLResponse> response :
       {std::shared_ptr<platform::URLResponse>(http), std::make_shared<platform::URLResponse>()}) {
    log_ = tests::RecordingLog::install();
    auto error = failureOf([&] { DeeplinkManager::destination({"", response}, link); }).nsError();
    EXPECT_EQ(error.code(), -2);
    EXPECT_EQ(
        error.userInfo(),
        (platform::UserInfo{{std::string(platform::NSLocalizedFailureReasonErrorKey), "unknown"}}));
    EXPECT_EQ(log_->lines(), (Lines{"debug: Could not resolve deeplink",
                                    "debug: Deeplink Resolution did not contain a URL"}));
  }
}

TEST_F(DeeplinkManagerTest, AnErrorWhoseFailingTextIsNoURLIsAFailureOfTheLink) {
  platform::PlatformError error(
      "d", 1, "no route", {{std::string(platform::NSURLErrorFailingURLStringErrorKey), "a b"}});
  auto link = URL::parse("https://l.example/x").value();
  EXPECT_EQ(std::get<DeeplinkResolutionError::Failure>(
                failureOf([&] { DeeplinkManager::destination(error, link); }).value()),
            (DeeplinkResolutionError::Failure{"https://l.example/x", "no route"}));
  EXPECT_EQ(log_->lines(), (Lines{"debug: An error occurred while attempting to resolve a Deeplink",
                                  "error: no route"}));
}

platform::Task<void> expectCancelled(DeeplinkManager manager, std::stop_token stop,
                                     std::shared_ptr<Text> message) {
  try {
    co_await manager.resolve(stop);
  } catch (const DeeplinkResolutionError& error) {
    *message = std::get<DeeplinkResolutionError::Failure>(error.value()).message;
  }
}

TEST_F(DeeplinkManagerTest, ACancelledResolutionFailsAtOnceAndSaysSo) {
  std::stop_source stop;
  auto message = std::make_shared<Text>();
  DeeplinkManager manager(URL::parse("https://l.example/p/go/5").value(), session());
  auto handle = platform::startTask(expectCancelled(manager, stop.get_token(), message), stop);
  while (service_.received().size() < 2) std::this_thread::yield();
  handle.cancel();
  ASSERT_TRUE(handle.waitFor(std::chrono::seconds(20)));
  EXPECT_EQ(*message, "The load was cancelled.");
  EXPECT_EQ(log_->lines(), (Lines{"debug: An error occurred while attempting to resolve a Deeplink",
                                  "error: The load was cancelled."}));
}

/// A subclass may replace what is done with a target.
struct Replaced : URLSessionRedirectDelegate {
  using URLSessionRedirectDelegate::urlSession;
  platform::Task<std::optional<platform::URLRequest>> urlSession(
      platform::URLSession& session, platform::URLSessionTask& task,
      platform::HTTPURLResponse response, platform::URLRequest request) override {
    timeout = task.originalRequest.timeoutInterval;
    return URLSessionRedirectDelegate::urlSession(session, task, std::move(response),
                                                  std::move(request));
  }
  void setQWUFromDeeplink(const URL& url) override { seen.push_back("u " + url.absoluteString()); }
  void setRulesPicKeyFromDeeplink(const URL& url) override {
    seen.push_back("k " + url.absoluteString());
  }
  Lines seen;
  std::optional<double> timeout;
};

TEST_F(DeeplinkManagerTest, TheDelegatesStepsMayBeReplacedAndComeInOrder) {
  auto replaced = std::make_shared<Replaced>();
  auto session = platform::URLSession::make(service_.configuration(), replaced);
  DeeplinkManager manager(URL::parse("https://l.example/p/cp/x/c").value(), session);
  platform::wait(manager.resolve());
  EXPECT_EQ(replaced->seen,
            (Lines{"u shopapp://product/42?qw_u=app", "k shopapp://product/42?qw_u=app"}));
  EXPECT_EQ(analytics().qwuDeeplink(), std::nullopt);
  EXPECT_EQ(replaced->timeout, 60);
}

TEST_F(DeeplinkManagerTest, TheDelegateAnswersACompletionHandlerToo) {
  Replaced delegate;
  auto session = platform::URLSession::shared();
  platform::URLSessionTask task;
  auto answer = [&](std::optional<URL> url) {
    std::promise<std::string> answered;
    delegate.urlSession(*session, task, {}, {.url = std::move(url), .httpMethod = "HEAD"},
                        [&](const std::optional<platform::URLRequest>& next) {
                          answered.set_value(!next       ? "nothing"
                                             : next->url ? next->url->absoluteString()
                                                         : *next->httpMethod + " without a URL");
                        });
    return answered.get_future().get();
  };
  EXPECT_EQ(answer(URL::parse("https://shop.example/a")), "https://shop.example/a");
  EXPECT_EQ(answer(URL::parse("https://shop.example/a?qw_hr=1")), "nothing");
  delegate.seen.clear();
  EXPECT_EQ(answer(std::nullopt), "HEAD without a URL");
  EXPECT_TRUE(delegate.seen.empty());
}

}  // namespace
}  // namespace quenwick
