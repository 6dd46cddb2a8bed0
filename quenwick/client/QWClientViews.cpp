#include <utility>

#include "quenwick/client/HostCalls.h"
#include "quenwick/client/QWClient.h"
#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/Text.h"
#include "quenwick/ui/WebViewController.h"

namespace quenwick {
namespace {

using Handler = std::function<void(const std::string& buttonID)>;

void show(std::string_view link, bool asInAppBrowser, bool hideCloseButton, Handler handler) {
  auto url = URL::parse(std::string(link));
  if (!url) {
    return platform::logPlatformError("An in-app view was asked for what is no URL: " +
                                      platform::shown(link));
  }
  // Called on the main actor already.
  auto call = [handler = std::move(handler)](const std::string& buttonID) {
    if (handler) HostCalls::shared().run([&] { handler(buttonID); });
  };
  WebViewController::show(*std::move(url), asInAppBrowser, hideCloseButton, std::move(call));
}

}  // namespace

void QWClient::showInAppMessage(std::string_view link, bool hideCloseButton, Handler handler) {
  if (enter()) show(link, false, hideCloseButton, std::move(handler));
}

void QWClient::showInAppBrowser(std::string_view link, Handler handler) {
  if (enter()) show(link, true, false, std::move(handler));
}

}  // namespace quenwick
