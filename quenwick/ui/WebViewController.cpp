#include "quenwick/ui/WebViewController.h"

#include <exception>
#include <utility>

#include "quenwick/logging/Logger.h"
#include "quenwick/platform/Error.h"
#include "quenwick/platform/FatalError.h"
#include "quenwick/platform/MainActor.h"
#include "quenwick/state/Analytics.h"
#include "quenwick/ui/PageLink.h"
#include "quenwick/ui/UIApplication.h"

namespace quenwick {
namespace {

constexpr double kTimeout = 60;
constexpr double kFadeDuration = 0.25;
constexpr double kCloseButtonMargin = 16;
constexpr auto kCloseButtonSymbol = "xmark.circle.fill";

void logError(std::string_view message) { Logger::error(QWLogType::none, message); }

void openOutside(const platform::URL& url) {
  if (auto application = platform::Application::shared()) application->open(url);
}

void present(std::shared_ptr<WebViewController> controller) {
  controller->modalPresentationStyle = platform::ModalPresentationStyle::overCurrentContext;
  controller->modalPresentationCapturesStatusBarAppearance = true;
  auto window = UIApplication::keyWindow();
  if (!window || !window->present(std::move(controller))) {
    logError("Cannot show the page: the application has no window to show it over");
  }
}

}  // namespace

void WebViewController::show(platform::URL qwLink, bool asInAppBrowser, bool hideCloseButton,
                             Handler handler) {
  if (!platform::Application::shared()) {
    logError("Cannot show the page: no window toolkit is installed (quenwick::ui::install)");
    return;
  }
  platform::MainActor::post(
      [link = std::move(qwLink), asInAppBrowser, hideCloseButton, toCall = std::move(handler)] {
        present(std::make_shared<WebViewController>(link, asInAppBrowser, hideCloseButton, toCall));
      });
}

WebViewController::WebViewController(platform::URL qwLink, bool inAppBrowser, bool hidesCloseButton,
                                     Handler toCall)
    : asInAppBrowser(inAppBrowser),
      hideCloseButton(hidesCloseButton),
      link(std::move(qwLink)),
      handler(std::move(toCall)) {}

WebViewController::WebViewController(const NSCoder&)
    : WebViewController(*platform::URL::parse("about:blank"), false, false, nullptr) {
  platform::fatalError("init(coder:) has not been implemented");
}

platform::WebView& WebViewController::webView() {
  if (!webView_) {
    webView_ = std::make_unique<FullScreenWKWebView>(screen()->addWebView(weak_from_this()));
  }
  return *webView_;
}

platform::ActivityIndicator& WebViewController::activityIndicator() {
  if (!activityIndicator_) {
    activityIndicator_ = screen()->addActivityIndicator(platform::ActivityIndicatorStyle::large);
  }
  return *activityIndicator_;
}

platform::Button& WebViewController::closeButton() {
  if (!closeButton_) {
    auto dismissSelf = [weak = weak_from_this()] {
      if (auto self = weak.lock()) self->dismiss(/*animated=*/true);
    };
    closeButton_ = screen()->addButton({kCloseButtonSymbol, kCloseButtonMargin}, dismissSelf);
  }
  return *closeButton_;
}

void WebViewController::viewDidLoad() {
  screen()->setBlackBackground();
  // In this order: each stands before the one made earlier.
  webView();
  closeButton();
  activityIndicator();
}

void WebViewController::viewDidLayoutSubviews() {
  if (std::exchange(isPageAskedFor_, true)) return;
  auto url = pageURL(link, webView().frameSize(), Analytics::shared().qwu());
  if (!url) {
    dismiss(/*animated=*/true);
    return;
  }
  closeButton().setHidden(isCloseButtonHidden(hideCloseButton, link));
  platform::MainActor::post([weak = weak_from_this(), toLoad = *std::move(url)] {
    if (auto self = weak.lock()) self->loadPage(toLoad);
  });
}

void WebViewController::loadPage(const platform::URL& url) {
  if (screen()) webView().load({.url = url, .timeoutInterval = kTimeout});
}

void WebViewController::webViewDidFinish(platform::WebView& finished) {
  finished.fadeIn(kFadeDuration);
  activityIndicator().stopAnimating();
}

void WebViewController::webView(platform::WebView&,
                                const platform::NavigationAction& decidePolicyFor,
                                const DecisionHandler& decisionHandler) {
  auto decision = decideNavigation(asInAppBrowser, decidePolicyFor);
  bool isAllowed = decision.action == NavigationDecision::Action::loadInside;
  decisionHandler(isAllowed ? platform::NavigationPolicy::allow
                            : platform::NavigationPolicy::cancel);
  if (isAllowed && !decision.buttonID) return;
  // Later, out of the engine's question: the host's handler may do what it likes.
  platform::MainActor::post([self = shared_from_this(), decision, url = decidePolicyFor.url] {
    self->carryOut(decision, url);
  });
}

void WebViewController::carryOut(const NavigationDecision& decision, const platform::URL& url) {
  using Action = NavigationDecision::Action;
  // What ends the view is opened before the host hears of it, what leaves it there after.
  if (decision.action == Action::openOutsideAndDismiss) openOutside(url);
  if (decision.buttonID) report(*decision.buttonID);
  if (decision.action == Action::openOutside) openOutside(url);
  if (decision.action == Action::openOutsideAndDismiss) dismiss(/*animated=*/true);
  if (decision.action == Action::openInAppBrowser) {
    dismiss(/*animated=*/true);
    show(url, /*asInAppBrowser=*/true, /*hideCloseButton=*/false, handler);
  }
}

void WebViewController::report(const std::string& buttonID) const {
  if (!handler) return;
  try {
    handler(buttonID);
  } catch (...) {
    auto error = platform::errorFrom(std::current_exception());
    logError("The handler of an in-app view failed: " + error->localizedDescription());
  }
}

void WebViewController::webView(platform::WebView&, const platform::PlatformError& didFail) {
  logError("Could not load the page: " + didFail.localizedDescription());
  dismiss(/*animated=*/true);
}

void WebViewController::webViewWebContentProcessDidTerminate(platform::WebView&) {
  logError("The process of the page has ended, and its view is closed");
  dismiss(/*animated=*/true);
}

}  // namespace quenwick
