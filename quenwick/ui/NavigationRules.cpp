#include "quenwick/ui/NavigationRules.h"

#include "quenwick/platform/Text.h"
#include "quenwick/platform/URLComponents.h"
#include "quenwick/platform/WebURL.h"

namespace quenwick {
namespace {

using Action = NavigationDecision::Action;

bool carries(const platform::URL& url, std::string_view name) {
  return platform::URLComponents::queryItem(url, name).has_value();
}

Action actionForWebPage(bool asInAppBrowser, const platform::URL& url) {
  if (asInAppBrowser || carries(url, "inFrame")) return Action::loadInside;
  if (carries(url, "inAppBrowser")) return Action::openInAppBrowser;
  return Action::openOutside;
}

}  // namespace

std::optional<std::string> buttonID(const platform::URL& url) {
  auto item = platform::URLComponents::queryItem(url, "buttonID");
  return item ? item->value : std::nullopt;
}

NavigationDecision decideNavigation(bool asInAppBrowser, const platform::NavigationAction& action) {
  auto scheme = platform::lowercased(action.url.scheme());
  bool isWeb = platform::hasWebScheme(action.url);
  bool isDocument = scheme == "about" || scheme == "data" || scheme == "blob";
  if (!action.isUserInitiated && (isWeb || isDocument)) {
    if (action.opensNewWindow) return {Action::refuse};
    if (isDocument || !action.isMainFrame.value_or(false)) return {Action::loadInside};
  }
  auto decided =
      isWeb ? actionForWebPage(asInAppBrowser, action.url) : Action::openOutsideAndDismiss;
  return {decided, buttonID(action.url)};
}

}  // namespace quenwick
