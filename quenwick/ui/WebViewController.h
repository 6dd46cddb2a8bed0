#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "quenwick/platform/Executor.h"
#include "quenwick/platform/ViewController.h"
#include "quenwick/ui/FullScreenWKWebView.h"
#include "quenwick/ui/NavigationRules.h"

namespace quenwick {

/// An archive of views. There is none on this platform.
class NSCoder;

/// Shows a page of the service over the whole of the application's window: a message that may
/// carry buttons, or an ordinary page in the in-app browser. Used on the main actor, but for
/// `show`.
class WebViewController : public platform::ViewController,
                          public platform::WebViewDelegate,
                          public std::enable_shared_from_this<WebViewController> {
 public:
  /// Receives the identifier of a button that was tapped, on the main actor. What it throws ends
  /// in an error line.
  using Handler = std::function<void(const std::string& buttonID)>;

  /// Presents a new controller over the key window. Any thread; returns at once. Where there is no
  /// window toolkit, or no window to present over, one error line is written and nothing is shown.
  static void show(platform::URL qwLink, bool asInAppBrowser, bool hideCloseButton,
                   Handler handler);

  WebViewController(platform::URL qwLink, bool asInAppBrowser, bool hideCloseButton,
                    Handler handler);
  /// Not supported: stops the process.
  [[noreturn]] explicit WebViewController(const NSCoder& coder);

  const bool asInAppBrowser;
  const bool hideCloseButton;
  const platform::URL link;
  const Handler handler;
  /// Kept for the life of the controller.
  std::vector<platform::Cancellable> subscriptions;

  // The views, made on first use. Only while presented.
  platform::WebView& webView();
  platform::ActivityIndicator& activityIndicator();
  platform::Button& closeButton();

  void viewDidLoad() override;
  /// Loads the page the first time. A later change of size leaves it as it is: loading it again
  /// would lose what the person has entered.
  void viewDidLayoutSubviews() override;

  void webViewDidFinish(platform::WebView& webView) override;
  void webView(platform::WebView& webView, const platform::NavigationAction& decidePolicyFor,
               const DecisionHandler& decisionHandler) override;
  /// A page that cannot be loaded, or whose process has gone, ends the view with an error line.
  void webView(platform::WebView& webView, const platform::PlatformError& didFail) override;
  void webViewWebContentProcessDidTerminate(platform::WebView& webView) override;

 private:
  void loadPage(const platform::URL& url);
  void report(const std::string& buttonID) const;
  void carryOut(const NavigationDecision& decision, const platform::URL& url);

  std::unique_ptr<FullScreenWKWebView> webView_;
  std::unique_ptr<platform::ActivityIndicator> activityIndicator_;
  std::unique_ptr<platform::Button> closeButton_;
  bool isPageAskedFor_ = false;
};

}  // namespace quenwick
