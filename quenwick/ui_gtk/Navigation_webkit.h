#pragma once

#include <webkit/webkit.h>

#include <functional>
#include <string>

#include "quenwick/platform/WebView.h"

namespace quenwick::ui {

/// Turns the engine's questions about navigations into the delegate's. The engine asks before a
/// load, when it does not name the frame yet, and once the server has responded.
class Navigation {
 public:
  /// Asks the delegate; whether the navigation is allowed.
  using Ask = std::function<bool(const platform::NavigationAction&)>;

  /// Answers the engine's question, once.
  void decide(WebKitWebView* view, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
              const Ask& ask);

 private:
  void decideAction(WebKitWebView* view, WebKitNavigationPolicyDecision* decision,
                    bool opensNewWindow, const Ask& ask);
  void decideResponse(WebKitResponsePolicyDecision* decision, const Ask& ask);

  std::string moved_;    // the URL that asked for a window, and is loaded in place instead
  std::string decided_;  // the URL that a person started and the delegate has allowed
};

}  // namespace quenwick::ui
