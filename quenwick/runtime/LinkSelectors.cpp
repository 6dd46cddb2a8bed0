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

constexpr Selector kSelectors[] = {
    {"registerDeeplinkDomains:", {"domains"}, calls([](const std::vector<std::string>& domains) {
       QWClient::registerDeeplinkDomains(domains);
     })},
    {"registerDeeplinkDomainsFromPlist", {}, calls([] {
       QWClient::registerDeeplinkDomainsFromPlist();
     })},
    {"registerDeeplinkDomainsFromPlistWithBundle:", {"bundle"}, calls([](Dictionary info) {
       QWClient::registerDeeplinkDomainsFromPlist(Bundle(std::move(info)));
     })},
    {"domains", {}, calls([] { return QWClient::domains(); })},
    {"canHandleURL:", {"url"}, calls([](const std::string& url) {
       return QWClient::canHandleURL(url);
     })},
    {"handleUniversalLinkWithUrl:", {"url"}, calls([](const std::string& url) {
       return QWClient::handleUniversalLink(url);
     })},
    {"handleUniversalLinkFrom:", {"activity"}, calls([](const NSUserActivity& activity) {
       return QWClient::handleUniversalLink(activity);
     })},
    {"handleUniversalLinkWith:", {"options"}, calls([](const UISceneConnectionOptions& options) {
       return QWClient::handleUniversalLink(options);
     })},
    {"handleURLFromLaunchOptions:",
     {"options"},
     calls([](const std::optional<Dictionary>& options) {
       return QWClient::handleURLFromLaunchOptions(options.value_or(Dictionary()));
     })},
    {"checkPasteboardOnInstall", {}, calls([] { QWClient::checkPasteboardOnInstall(); })},
    {"checkPasteboardOnInstallWithCompletionHandler:",
     {"completionHandler"},
     calls([](const OptionalTextCallback& completion) {
       QWClient::checkPasteboardOnInstall([completion](const Text& link) {
         completion({valueOf(link)});
         completion.release();
       });
     })},
    {"pasteWithItemProviders:",
     {"itemProviders"},
     calls(
         [](const std::vector<NSItemProvider>& providers) { return QWClient::paste(providers); })},
    {"resolveWithUrl:completion:",
     {"url", "completion"},
     calls([](const std::string& url, const OutcomeCallback& completion) {
       return resolve(url, std::nullopt, completion);
     })},
    {"resolveWithUrl:deadline:completion:",
     {"url", "deadline", "completion"},
     calls([](const std::string& url, std::optional<double> deadline,
              const OutcomeCallback& completion) { return resolve(url, deadline, completion); })},
    {"storedDeeplink", {}, calls([] { return QWClient::storedDeeplink(); })},
    {"subscribeToStoredDeeplink:", {"receive"}, calls([](const OptionalTextCallback& receive) {
       return subscribe(receive);
     })},
    {"cancel:", {"handle"}, calls([](std::int64_t handle) {
       return Handles::shared().cancel(handle);
     })},
    {"addHandleablePaths:", {"paths"}, calls([](const Paths& paths) {
       QWClient::addHandleablePaths(paths);
     })},
    {"removeHandleablePathsFor:", {"host"}, calls([](const std::string& host) {
       QWClient::removeHandleablePaths(host);
     })},
    {"clearHandleablePaths", {}, calls([] { QWClient::clearHandleablePaths(); })},
    {"handleablePaths", {}, calls([] { return QWClient::handleablePaths(); })},
    {"qwU", {}, calls([] { return QWClient::qwU(); })},
    {"setQWU:", {"value"}, calls([](Text value) { QWClient::setQWU(std::move(value)); })},
};
static_assert(areNamed(kSelectors));

}  // namespace

std::span<const Selector> linkSelectors() { return kSelectors; }

}  // namespace quenwick::runtime
