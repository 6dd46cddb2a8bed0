#pragma once

#include <optional>
#include <string>

#include "quenwick/platform/WebView.h"

namespace quenwick {

/// What is done about a navigation.
struct NavigationDecision {
  enum class Action {
    /// The page goes on in place.
    loadInside,
    /// The platform's application opens the URL; the page stays.
    openOutside,
    /// The same, and the view is dismissed.
    openOutsideAndDismiss,
    /// The view is dismissed and the URL opened in the in-app browser.
    openInAppBrowser,
    /// Nothing happens.
    refuse,
  };
  Action action = Action::loadInside;
  /// The identifier that the host's handler is told.
  std::optional<std::string> buttonID = std::nullopt;

  friend bool operator==(const NavigationDecision&, const NavigationDecision&) = default;
};

/// The value of the URL's first query item "buttonID"; none where it has no value.
std::optional<std::string> buttonID(const platform::URL& url);

/// What a navigation does, in the in-app browser or in a message.
///
/// A navigation that a person started is decided by its URL, in whatever frame it is; so is every
/// scheme that no page has. Of the others http and https are decided once the engine names the
/// frame: by the URL for the page itself, while an inner frame goes on in place and reports
/// nothing, as do about, data and blob documents. A window that nobody asked for is refused.
NavigationDecision decideNavigation(bool asInAppBrowser, const platform::NavigationAction& action);

}  // namespace quenwick
