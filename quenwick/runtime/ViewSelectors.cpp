#include "quenwick/client/QWClient.h"
#include "quenwick/runtime/Selectors.h"

namespace quenwick::runtime {
namespace {

std::function<void(const std::string& buttonID)> handlerOf(
    const std::optional<TextCallback>& handler) {
  if (!handler) return nullptr;
  return [handler](const std::string& buttonID) { (*handler)({valueOf(buttonID)}); };
}

}  // namespace

std::vector<Selector> viewSelectors() {
  return {
      selector(
          "showInAppMessageWith:hideCloseButton:handler:",
          [](const std::string& link, bool hideCloseButton,
             const std::optional<TextCallback>& handler) {
            QWClient::showInAppMessage(link, hideCloseButton, handlerOf(handler));
          },
          "link", "hideCloseButton", "handler"),
      selector(
          "showInAppBrowserWith:handler:",
          [](const std::string& link, const std::optional<TextCallback>& handler) {
            QWClient::showInAppBrowser(link, handlerOf(handler));
          },
          "link", "handler"),
  };
}

}  // namespace quenwick::runtime
