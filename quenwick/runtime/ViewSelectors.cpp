#include "quenwick/client/QWClient.h"
#include "quenwick/runtime/Selectors.h"

namespace quenwick::runtime {
namespace {

std::function<void(const std::string& buttonID)> handlerOf(
    const std::optional<TextCallback>& handler) {
  if (!handler) return nullptr;
  return [handler](const std::string& buttonID) { (*handler)({valueOf(buttonID)}); };
}

constexpr Selector kSelectors[] = {
    {"showInAppMessageWith:hideCloseButton:handler:",
     {"link", "hideCloseButton", "handler"},
     calls([](const std::string& link, bool hideCloseButton,
              const std::optional<TextCallback>& handler) {
       QWClient::showInAppMessage(link, hideCloseButton, handlerOf(handler));
     })},
    {"showInAppBrowserWith:handler:",
     {"link", "handler"},
     calls([](const std::string& link, const std::optional<TextCallback>& handler) {
       QWClient::showInAppBrowser(link, handlerOf(handler));
     })},
};
static_assert(areNamed(kSelectors));

}  // namespace

std::span<const Selector> viewSelectors() { return kSelectors; }

}  // namespace quenwick::runtime
