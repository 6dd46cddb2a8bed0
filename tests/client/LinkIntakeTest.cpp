#include <atomic>

#include "quenwick/platform/Pasteboard.h"
#include "quenwick/platform/System.h"
#include "quenwick/state/Analytics.h"
#include "quenwick/ui/WebViewController.h"
#include "tests/client/ClientHost.h"
#include "tests/ui/RecordingToolkit.h"

namespace quenwick::tests {
namespace {

using Texts = std::vector<std::string>;

constexpr auto kLink = "https://l.example/p/go/1f";
constexpr auto kDestination = "shopapp://product/42";

class LinkIntakeTest : public ClientHost {};

TEST_F(LinkIntakeTest, ALinkIsTheApplicationsByDomainAndShapeOrPattern) {
  QWClient::registerDeeplinkDomains({"l.example", "other.example"});
  QWClient::registerDeeplinkDomains({"UPPER.example", "port.example:443", "path.example/p/go"});
  QWClient::addHandleablePaths({{"l.example", {"(", "/spring/"}}, {"stranger.example", {"."}}});
  EXPECT_EQ(logged("error: The path pattern ( is never found: "), 1);
  EXPECT_EQ(logged(R"(Registering Domains: ["l.example", "other.example"])"), 1);
  struct {
    std::string link;
    bool isOurs;
  } cases[] = {
      {kLink, true},
      {"http://l.example/p/go/", true},
      {"https://other.example/x/p/rpm/1/url", true},
      {"https://L.example/p/go/1f", false},
      {"https://UPPER.example/p/go/1f", true},
      {"https://upper.example/p/go/1f", false},
      {"https://port.example:443/p/go/1f", false},
      {"https://path.example/p/go/1f", false},
      {"https://sub.l.example/p/go/1f", false},
      {"https://l.example/spring/sale", true},
      {"https://other.example/spring/sale", false},
      {"https://stranger.example/p/go/1f", false},
      {"/p/go/1f", false},
      {"", false},
      {"https://l.example/ p/go/1f", false},
      {"\xff\xfe", false},
      {"https://l.example/" + std::string(1 << 20, 'x'), false},
  };
  for (const auto& [link, isOurs] : cases) {
    EXPECT_EQ(QWClient::canHandleURL(link), isOurs) << link.substr(0, 80);
  }
  EXPECT_EQ(logged("Found host: sub.l.example"), 1);
  EXPECT_EQ(logged("Could not extract host from url /p/go/1f"), 1);
  EXPECT_FALSE(QWClient::handleUniversalLink("https://stranger.example/p/go/1f"));
  EXPECT_EQ(logged("QWClient cannot handle the URL: https://stranger.example/p/go/1f"), 1);
  QWClient::addHandleablePaths({{"l.example", {"/autumn/"}}});
  EXPECT_FALSE(QWClient::canHandleURL("https://l.example/spring/sale")) << "the list was replaced";
  EXPECT_TRUE(QWClient::canHandleURL("https://l.example/autumn/sale"));
  EXPECT_EQ(QWClient::handleablePaths().size(), 2U);
  QWClient::removeHandleablePaths("l.example");
  EXPECT_EQ(QWClient::handleablePaths(),
            (std::map<std::string, Texts>{{"stranger.example", {"."}}}));
  EXPECT_FALSE(QWClient::canHandleURL("https://l.example/autumn/sale"));
  QWClient::clearHandleablePaths();
  EXPECT_TRUE(QWClient::handleablePaths().empty());
}

TEST_F(LinkIntakeTest, TheHostIsLookedUpAsTheSystemOfTheTimeGivesIt) {
  QWClient::registerDeeplinkDomains({"l.example"});
  for (auto [version, isOurs] : {std::pair(15, true), {16, false}}) {
    platform::setSystemVersion(version);
    EXPECT_EQ(QWClient::canHandleURL("https://l%2Eexample/p/go/1f"), isOurs) << version;
  }
  platform::setSystemVersion(std::nullopt);
}

TEST_F(LinkIntakeTest, ALinkBeforeStartIsKeptAndTheLogSaysThatNobodyWasTold) {
  QWClient::registerDeeplinkDomains({"l.example"});
  Collected<std::optional<std::string>> published;
  auto subscription =
      QWClient::storedDeeplinkPublisher().subscribe([&](const auto& link) { published.add(link); });
  EXPECT_TRUE(QWClient::handleUniversalLink(kLink));
  EXPECT_EQ(published.wait(2), (std::vector<std::optional<std::string>>{{}, kDestination}));
  EXPECT_EQ(QWClient::storedDeeplink(), kDestination);
  EXPECT_EQ(QWClient::qwU(), "alice");
  // The handler is called, or found missing, after the link was published: on the same thread.
  settle();
  EXPECT_EQ(logged("no handler was set"), 1);
}

TEST_F(LinkIntakeTest, OutcomesReachBothHandlersOnTheMainActor) {
  Collected<std::pair<std::optional<std::string>, int>> compatible;
  QWClient::startWithResult({.apiKey = "key", .result = [&](const auto& link, const auto& error) {
                               EXPECT_EQ(QWClient::storedDeeplink(), kDestination) << "already";
                               compatible.add({link, error ? error->code() : 0});
                               EXPECT_TRUE(!error || error->domain() == "com.quenwick.error");
                             }});
  QWClient::start({.deeplinkDomains = {"l.example"},
                   .launchOptions = {{UIApplicationLaunchOptionsURLKey, kLink}},
                   .shouldRegisterForBehaviorEvents = false,
                   .deeplinkHandler = collect()});
  EXPECT_EQ(results_.wait(1), Texts{kDestination});
  EXPECT_TRUE(QWClient::handleUniversalLink("https://l.example/p/go/2"));
  EXPECT_EQ(results_.wait(2).back(), "no such offer");
  auto told = compatible.wait(2);
  EXPECT_EQ(told.front().first, kDestination);
  EXPECT_EQ(told.back(), std::pair(std::optional<std::string>(), -1));
  EXPECT_EQ(QWClient::storedDeeplink(), kDestination) << "a failure leaves what was stored";
}

TEST_F(LinkIntakeTest, EveryKindOfOpeningIsRead) {
  QWClient::registerDeeplinkDomains({"l.example"});
  NSUserActivity browsing{.activityType = NSUserActivityTypeBrowsingWeb, .webpageURL = kLink};
  NSUserActivity other{.activityType = "com.example.edit", .webpageURL = kLink};
  EXPECT_TRUE(QWClient::handleUniversalLink(browsing));
  EXPECT_FALSE(QWClient::handleUniversalLink(other));
  EXPECT_FALSE(QWClient::handleUniversalLink(NSUserActivity{browsing.activityType}));
  EXPECT_TRUE(QWClient::handleUniversalLink(UISceneConnectionOptions{{other, browsing}}));
  EXPECT_TRUE(QWClient::handleUniversalLink(
      UISceneConnectionOptions{{NSUserActivity{browsing.activityType}, browsing}}));
  EXPECT_FALSE(QWClient::handleUniversalLink(UISceneConnectionOptions{{other}}));
  EXPECT_FALSE(QWClient::handleUniversalLink(UISceneConnectionOptions{}));

  EXPECT_TRUE(QWClient::handleURLFromLaunchOptions({{UIApplicationLaunchOptionsURLKey, kLink}}));
  EXPECT_EQ(logged("Found URL in launch options"), 1);
  EXPECT_FALSE(QWClient::handleURLFromLaunchOptions({}));
  EXPECT_FALSE(QWClient::handleURLFromLaunchOptions({{UIApplicationLaunchOptionsURLKey, 7}}));
  EXPECT_EQ(logged("App not opened from a URL"), 2);

  EXPECT_TRUE(QWClient::paste({{.text = "no link at all"}, {.url = "", .text = kLink}}));
  EXPECT_FALSE(QWClient::paste({{.url = "https://stranger.example/p/go/1"}, {.url = kLink}}))
      << "the first link decides";
  EXPECT_FALSE(QWClient::paste({}));
}

/// What a person copied, and how far it was looked at.
class Copied : public platform::Pasteboard {
 public:
  Copied(std::optional<std::string> url, std::optional<std::string> text)
      : url_(std::move(url)), text_(std::move(text)) {}

  platform::Task<bool> hasURLs() override { co_return url_.has_value(); }
  platform::Task<bool> hasStrings() override { co_return text_.has_value(); }
  platform::Task<std::optional<URL>> url() override {
    ++reads;
    co_return URL::parse(url_.value());
  }
  platform::Task<std::optional<std::string>> string() override {
    ++reads;
    co_return text_;
  }

  std::atomic<int> reads = 0;

 private:
  std::optional<std::string> url_;
  std::optional<std::string> text_;
};

TEST_F(LinkIntakeTest, TheFirstLaunchTakesALinkFromThePasteboardAndReadsNoMoreThanItMust) {
  QWClient::start({.deeplinkDomains = {"l.example"},
                   .shouldRegisterForBehaviorEvents = false,
                   .deeplinkHandler = collect()});
  Collected<std::optional<std::string>> looked;
  auto check = [&](const std::shared_ptr<Copied>& copied) {
    platform::Pasteboard::setGeneral(copied);
    auto before = looked.wait(0).size();
    QWClient::checkPasteboardOnInstall([&](const auto& link) { looked.add(link); });
    return looked.wait(before + 1).back();
  };
  auto empty = std::make_shared<Copied>(std::nullopt, std::nullopt);
  EXPECT_EQ(check(nullptr), std::nullopt);
  EXPECT_EQ(check(empty), std::nullopt);
  EXPECT_EQ(empty->reads, 0);
  EXPECT_EQ(check(std::make_shared<Copied>(std::nullopt, "no link")), std::nullopt);
  EXPECT_EQ(check(std::make_shared<Copied>(kLink, "https://l.example/p/go/2")), kLink);
  EXPECT_EQ(results_.wait(1), Texts{kDestination});
  EXPECT_EQ(check(std::make_shared<Copied>("", kLink)), kLink) << "no URL: the text counts";
  EXPECT_EQ(results_.wait(2).size(), 2U);
  Analytics::shared().clearFirstInstallFlag();
  auto later = std::make_shared<Copied>(kLink, kLink);
  EXPECT_EQ(check(later), std::nullopt);
  EXPECT_EQ(later->reads, 0);
  platform::Pasteboard::setGeneral(nullptr);
}

TEST_F(LinkIntakeTest, TheFirstLaunchIsKnownAsOneBeforeAnyOtherCall) {
  platform::Pasteboard::setGeneral(std::make_shared<Copied>(kLink, std::nullopt));
  Collected<std::optional<std::string>> looked;
  QWClient::checkPasteboardOnInstall([&](const auto& link) { looked.add(link); });
  EXPECT_EQ(looked.wait(1), std::vector<std::optional<std::string>>{kLink});
  platform::Pasteboard::setGeneral(nullptr);
}

TEST_F(LinkIntakeTest, ViewsAreShownAsTheyWereAskedForAndReportTheirButtons) {
  auto toolkit = RecordingToolkit::install();
  toolkit->addWindow("main", true);
  Texts buttons;
  auto report = [&](const std::string& buttonID) { buttons.push_back(buttonID); };
  QWClient::showInAppMessage("https://shop.example/messages/spring", true, report);
  QWClient::showInAppBrowser("https://shop.example/pages/care", report);
  toolkit->run();
  ASSERT_EQ(toolkit->presented.size(), 2U);
  for (bool isBrowser : {false, true}) {
    auto& shown = dynamic_cast<WebViewController&>(*toolkit->presented.at(isBrowser));
    EXPECT_EQ(shown.asInAppBrowser, isBrowser);
    EXPECT_EQ(shown.hideCloseButton, !isBrowser);
    auto tapped = URL::parse(isBrowser ? "https://h/?buttonID=2" : "https://h/?inFrame&buttonID=1");
    shown.webView(shown.webView(), {*tapped, true}, [](platform::NavigationPolicy) {});
  }
  toolkit->run();
  EXPECT_EQ(buttons, (Texts{"1", "2"}));
  platform::Application::setShared(nullptr);
}

TEST_F(LinkIntakeTest, ViewsWithoutAWindowToolkitAreOneLineEach) {
  QWClient::showInAppMessage("https://shop.example/messages/spring");
  QWClient::showInAppBrowser("https://shop.example/pages/care", [](const auto&) {});
  QWClient::showInAppMessage("no link");
  settle();
  EXPECT_EQ(logged("error: "), 3);
}

TEST_F(LinkIntakeTest, AResolutionOnDemandEndsInTimeAndTellsWhy) {
  EXPECT_EQ(std::get<std::string>(QWClient::resolve(kLink).get()), kDestination);
  QWClient::resolve("https://l.example/p/go/2", collect());
  EXPECT_EQ(results_.wait(1), Texts{"no such offer"});

  auto slow = "https://l.example/p/go/3";
  auto begin = std::chrono::steady_clock::now();
  auto late = QWClient::resolve(slow, {.deadline = std::chrono::milliseconds(50)}).get();
  std::stop_source stop;
  auto stopped = QWClient::resolve(slow, {.stop = stop.get_token()});
  stop.request_stop();
  for (const auto& result : {late, stopped.get(), QWClient::resolve("").get(),
                             QWClient::resolve(std::string(1 << 20, 'x') + "\xff").get()}) {
    const auto* error = std::get_if<DeeplinkResolutionError>(&result);
    ASSERT_TRUE(error);
    EXPECT_FALSE(error->localizedDescription().empty());
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

}  // namespace
}  // namespace quenwick::tests
