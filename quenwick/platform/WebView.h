#pragma once

#include <functional>
#include <optional>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/URLRequest.h"

namespace quenwick::platform {

/// A size in points, which do not depend on how finely the display resolves them.
struct ViewSize {
  double width = 0;
  double height = 0;
};

/// How far a view's content is kept away from each edge, in points.
struct EdgeInsets {
  double top = 0;
  double left = 0;
  double bottom = 0;
  double right = 0;
  friend bool operator==(const EdgeInsets&, const EdgeInsets&) = default;
};

/// A navigation that a page is about to make.
struct NavigationAction {
  URL url;
  /// Whether a person's tap, click or key started it.
  bool isUserInitiated = false;
  /// Whether it is the page itself that is replaced, and not a frame in it; none where the engine
  /// does not tell yet. It then asks again, with the answer, once the server has responded.
  std::optional<bool> isMainFrame = std::nullopt;
  /// Whether the page asks for a window of its own for it.
  bool opensNewWindow = false;
};

enum class NavigationPolicy { cancel = 0, allow = 1 };

class WebView;

/// Told what happens in a web view. Called on the main actor.
class WebViewDelegate {
 public:
  using DecisionHandler = std::function<void(NavigationPolicy)>;

  virtual ~WebViewDelegate() = default;

  /// The page has been loaded.
  virtual void webViewDidFinish(WebView& webView) = 0;

  /// `decisionHandler` is called once, before this returns.
  virtual void webView(WebView& webView, const NavigationAction& decidePolicyFor,
                       const DecisionHandler& decisionHandler) = 0;

  /// The page asked for by `load` could not be loaded.
  virtual void webView(WebView& webView, const PlatformError& didFail) = 0;

  /// The process that ran the page has ended, or was ended because it hung.
  virtual void webViewWebContentProcessDidTerminate(WebView& webView) = 0;
};

/// Shows web pages. Made by a window toolkit; used on the main actor only.
class WebView {
 public:
  virtual ~WebView() = default;

  virtual ViewSize frameSize() const = 0;
  virtual EdgeInsets safeAreaInsets() const = 0;

  /// Loads the request's URL. Fails with `timedOut` where it makes no progress for its time-out.
  virtual void load(const URLRequest& request) = 0;

  /// Lets the view, transparent until then, appear over that many seconds.
  virtual void fadeIn(double seconds) = 0;
};

}  // namespace quenwick::platform
