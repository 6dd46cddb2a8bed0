#include "quenwick/ui/WebViewController.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "quenwick/platform/Pasteboard.h"
#include "quenwick/state/Analytics.h"
#include "tests/support/FatalMessage.h"
#include "tests/support/RecordingLog.h"
#include "tests/ui/RecordingToolkit.h"

namespace quenwick {

class NSCoder {};

namespace {

using tests::Record;

platform::URL url(const std::string& text) { return platform::URL::parse(text).value(); }

class WebViewControllerTest : public testing::Test {
 protected:
  void present(bool asInAppBrowser, bool hideCloseButton = false,
               const std::string& link = "https://h/m?a=b") {
    toolkit_->addWindow("main", true);
    WebViewController::show(url(link), asInAppBrowser, hideCloseButton,
                            [this](const std::string& id) { toolkit_->note("button " + id); });
    toolkit_->run();
    controller_ = std::static_pointer_cast<WebViewController>(toolkit_->presented.at(0));
  }

  bool navigate(const std::string& to) {
    bool isAllowed = false;
    auto keep = [&](platform::NavigationPolicy policy) {
      isAllowed = policy == platform::NavigationPolicy::allow;
    };
    auto& view = controller_.lock()->webView();
    toolkit_->delegate.lock()->webView(view, {url(to), true}, keep);
    toolkit_->run();
    return isAllowed;
  }

  std::shared_ptr<tests::RecordingLog> log_ = tests::RecordingLog::install();
  std::shared_ptr<tests::RecordingToolkit> toolkit_ = tests::RecordingToolkit::install();
  std::weak_ptr<WebViewController> controller_;
};

TEST_F(WebViewControllerTest, LaysOutItsViewsAndLoadsThePageOnce) {
  Analytics::shared().setQWU("alice");
  present(/*asInAppBrowser=*/false);
  EXPECT_EQ(toolkit_->taken(),
            (Record{"present over main", "black", "page", "xmark.circle.fill 16.000000",
                    "spinner 101", "show", "load"}));
  EXPECT_EQ(toolkit_->loaded.url->absoluteString(),
            "https://h/m?a=b&qw_viewport_width=390&qw_viewport_height=844&qw_u=alice&inFrame");
  EXPECT_EQ(toolkit_->loaded.timeoutInterval, 60);
  EXPECT_EQ(toolkit_->loaded.cachePolicy, platform::CachePolicy::useProtocolCachePolicy);
  auto controller = controller_.lock();
  EXPECT_EQ(controller->webView().safeAreaInsets(), platform::EdgeInsets());
  EXPECT_EQ(static_cast<int>(controller->modalPresentationStyle), 6);
  EXPECT_TRUE(controller->modalPresentationCapturesStatusBarAppearance);

  controller->viewDidLayoutSubviews();
  toolkit_->run();
  controller->webViewDidFinish(controller->webView());
  EXPECT_EQ(toolkit_->taken(), (Record{"fade 0.250000", "stop"}));
}

TEST_F(WebViewControllerTest, IsGoneOnceItIsDismissed) {
  struct Case {
    const char* how;
    std::function<void()> leave;
    std::ptrdiff_t errorLines;
  };
  auto view = [this]() -> platform::WebView& { return controller_.lock()->webView(); };
  for (const auto& [how, leave, errorLines] : {
           Case{"close button", [&] { toolkit_->closeAction(); }, 0},
           Case{"escape", [&] { controller_.lock()->performEscape(); }, 0},
           Case{"failed load",
                [&] {
                  platform::PlatformError failed("d", 1, "no route");
                  toolkit_->delegate.lock()->webView(view(), failed);
                },
                1},
           Case{"dead process",
                [&] { toolkit_->delegate.lock()->webViewWebContentProcessDidTerminate(view()); },
                1},
       }) {
    present(/*asInAppBrowser=*/true, /*hideCloseButton=*/true);
    EXPECT_EQ(toolkit_->taken().at(5), "hide");
    auto before = log_->count("error: ");
    leave();
    toolkit_->run();
    EXPECT_EQ(toolkit_->taken(), Record{"dismiss animated"}) << how;
    EXPECT_TRUE(controller_.expired()) << how;
    EXPECT_EQ(log_->count("error: ") - before, errorLines) << how;
  }
}

TEST_F(WebViewControllerTest, CarriesOutWhatANavigationDoes) {
  struct Case {
    bool asInAppBrowser;
    const char* url;
    bool isAllowed;
    Record record;
  };
  for (const auto& [mode, to, isAllowed, record] : {
           Case{false, "https://h/?inFrame&buttonID=1", true, {"button 1"}},
           Case{false, "https://h/?buttonID=2", false, {"button 2", "open https://h/?buttonID=2"}},
           Case{false,
                "tel:1?buttonID=3",
                false,
                {"open tel:1?buttonID=3", "button 3", "dismiss animated"}},
           Case{true, "tel:1", false, {"open tel:1", "dismiss animated"}},
           Case{true, "https://h/?buttonID=4", true, {"button 4"}},
       }) {
    toolkit_ = tests::RecordingToolkit::install();
    present(mode);
    toolkit_->taken();
    EXPECT_EQ(navigate(to), isAllowed) << to;
    EXPECT_EQ(toolkit_->taken(), record) << to;
  }
}

TEST_F(WebViewControllerTest, TheInAppBrowserTakesTheMessagesPlaceAndItsHandler) {
  present(/*asInAppBrowser=*/false, /*hideCloseButton=*/true);
  toolkit_->taken();
  EXPECT_FALSE(navigate("https://shop/?inAppBrowser&buttonID=more"));
  auto record = toolkit_->taken();
  ASSERT_GT(record.size(), 3U);
  record.resize(3);
  EXPECT_EQ(record, (Record{"button more", "dismiss animated", "present over main"}));
  EXPECT_TRUE(controller_.expired());
  controller_ = std::static_pointer_cast<WebViewController>(toolkit_->presented.at(0));
  auto browser = controller_.lock();
  EXPECT_TRUE(browser->asInAppBrowser);
  EXPECT_FALSE(browser->hideCloseButton);
  EXPECT_EQ(browser->link.absoluteString(), "https://shop/?inAppBrowser&buttonID=more");
  EXPECT_TRUE(navigate("https://h/?buttonID=back"));
  EXPECT_EQ(toolkit_->taken(), Record{"button back"});
}

TEST_F(WebViewControllerTest, ThePageIsShownOverTheFirstKeyWindow) {
  toolkit_->addWindow("behind", false);
  toolkit_->addWindow("first", true);
  toolkit_->addWindow("second", true);
  WebViewController::show(url("https://h/"), false, false, nullptr);
  EXPECT_TRUE(toolkit_->taken().empty()) << "shown inside the call";
  toolkit_->run();
  EXPECT_EQ(toolkit_->taken().at(0), "present over first");
  controller_ = std::static_pointer_cast<WebViewController>(toolkit_->presented.at(0));
  EXPECT_TRUE(navigate("https://h/?inFrame&buttonID=1")) << "without a handler";
}

TEST_F(WebViewControllerTest, WithoutAWindowOneErrorLineSaysSo) {
  auto show = [this] {
    WebViewController::show(url("https://h/"), true, false, nullptr);
    toolkit_->run();
    return log_->count("error: Cannot show the page: ");
  };
  EXPECT_EQ(show(), 1) << "no window";
  toolkit_->addWindow("empty", true, /*hasContent=*/false);
  EXPECT_EQ(show(), 2) << "nothing in the window";
  platform::Application::setShared(nullptr);
  EXPECT_EQ(show(), 3) << "no toolkit";
  EXPECT_TRUE(toolkit_->taken().empty());
}

TEST_F(WebViewControllerTest, AHandlerThatThrowsEndsInOneErrorLine) {
  toolkit_->addWindow("main", true);
  WebViewController::show(url("https://h/"), false, false,
                          [](const std::string&) { throw std::runtime_error("host's fault"); });
  toolkit_->run();
  controller_ = std::static_pointer_cast<WebViewController>(toolkit_->presented.at(0));
  navigate("tel:1?buttonID=call");
  EXPECT_TRUE(controller_.expired()) << "what follows the report is done all the same";
  EXPECT_EQ(log_->count("host's fault"), 1);
  EXPECT_EQ(log_->count("error: "), 1);
}

TEST(WebViewController, CannotBeMadeFromAnArchive) {
  EXPECT_EQ(tests::fatalMessage([] { WebViewController controller{NSCoder()}; }),
            "init(coder:) has not been implemented");
}

}  // namespace
}  // namespace quenwick
