#include <algorithm>
#include <atomic>

#include "quenwick/client/QWClient.h"
#include "quenwick/runtime/Handles.h"
#include "quenwick/runtime/Selectors.h"

namespace quenwick::runtime {
namespace {

using Paths = std::map<std::string, std::vector<std::string>>;
using Text = std::optional<std::string>;

constexpr double kLongestDeadline = 1e9;  // seconds

std::chrono::nanoseconds nanoseconds(double seconds) {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
      std::chrono::duration<double>(std::clamp(seconds, 0.0, kLongestDeadline)));
}

Handle resolve(const std::string& url, std::optional<double> deadline,
               const OutcomeCallback& completion) {
  std::stop_source stop;
  auto isOver = std::make_shared<std::atomic<bool>>(false);
  auto handle = Handles::shared().add([stop]() mutable { stop.request_stop(); },
                                      [isOver] { return isOver->load(); });
  ResolveOptions options{.stop = stop.get_token()};
  if (deadline) options.deadline = nanoseconds(*deadline);
  QWClient::resolve(
      url,
      [isOver, completion](const DeeplinkResult& result) {
        *isOver = true;
        handlerOf(completion)(result);
        completion.release();
      },
      options);
  return {handle};
}

Handle subscribe(const OptionalTextCallback& callback) {
  auto publisher = QWClient::storedDeeplinkPublisher();
  auto subscription = std::make_shared<Cancellable>(
      publisher.subscribe([callback](const Text& link) { callback({valueOf(link)}); }));
  auto end = [subscription, callback] {
    subscription->cancel();
    callback.release();
  };
  return {Handles::shared().add(end, [] { return false; })};
}

}  // namespace

std::vector<Selector> linkSelectors() {
  return {
      selector(
          "registerDeeplinkDomains:",
          [](const std::vector<std::string>& domains) {
            QWClient::registerDeeplinkDomains(domains);
          },
          "domains"),
      selector("registerDeeplinkDomainsFromPlist",
               [] { QWClient::registerDeeplinkDomainsFromPlist(); }),
      selector(
          "registerDeeplinkDomainsFromPlistWithBundle:",
          [](Dictionary info) {
            QWClient::registerDeeplinkDomainsFromPlist(Bundle(std::move(info)));
          },
          "bundle"),
      selector("domains", [] { return QWClient::domains(); }),
      selector(
          "canHandleURL:", [](const std::string& url) { return QWClient::canHandleURL(url); },
          "url"),
      selector(
          "handleUniversalLinkWithUrl:",
          [](const std::string& url) { return QWClient::handleUniversalLink(url); }, "url"),
      selector(
          "handleUniversalLinkFrom:",
          [](const NSUserActivity& activity) { return QWClient::handleUniversalLink(activity); },
          "activity"),
      selector(
          "handleUniversalLinkWith:",
          [](const UISceneConnectionOptions& options) {
            return QWClient::handleUniversalLink(options);
          },
          "options"),
      selector(
          "handleURLFromLaunchOptions:",
          [](const std::optional<Dictionary>& options) {
            return QWClient::handleURLFromLaunchOptions(options.value_or(Dictionary()));
          },
          "options"),
      selector("checkPasteboardOnInstall", [] { QWClient::checkPasteboardOnInstall(); }),
      selector(
          "checkPasteboardOnInstallWithCompletionHandler:",
          [](const OptionalTextCallback& completion) {
            QWClient::checkPasteboardOnInstall([completion](const Text& link) {
              completion({valueOf(link)});
              completion.release();
            });
          },
          "completionHandler"),
      selector(
          "pasteWithItemProviders:",
          [](const std::vector<NSItemProvider>& providers) { return QWClient::paste(providers); },
          "itemProviders"),
      selector(
          "resolveWithUrl:completion:",
          [](const std::string& url, const OutcomeCallback& completion) {
            return resolve(url, std::nullopt, completion);
          },
          "url", "completion"),
      selector(
          "resolveWithUrl:deadline:completion:",
          [](const std::string& url, std::optional<double> deadline,
             const OutcomeCallback& completion) { return resolve(url, deadline, completion); },
          "url", "deadline", "completion"),
      selector("storedDeeplink", [] { return QWClient::storedDeeplink(); }),
      selector(
          "subscribeToStoredDeeplink:",
          [](const OptionalTextCallback& receive) { return subscribe(receive); }, "receive"),
      selector(
          "cancel:", [](std::int64_t handle) { return Handles::shared().cancel(handle); },
          "handle"),
      selector(
          "addHandleablePaths:", [](const Paths& paths) { QWClient::addHandleablePaths(paths); },
          "paths"),
      selector(
          "removeHandleablePathsFor:",
          [](const std::string& host) { QWClient::removeHandleablePaths(host); }, "host"),
      selector("clearHandleablePaths", [] { QWClient::clearHandleablePaths(); }),
      selector("handleablePaths", [] { return QWClient::handleablePaths(); }),
      selector("qwU", [] { return QWClient::qwU(); }),
      selector(
          "setQWU:", [](Text value) { QWClient::setQWU(std::move(value)); }, "value"),
  };
}

}  // namespace quenwick::runtime
