#include <algorithm>
#include <array>
#include <utility>

#include "quenwick/client/HostCalls.h"
#include "quenwick/client/LinkIntake.h"
#include "quenwick/client/QWClient.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/Pasteboard.h"
#include "quenwick/platform/Text.h"
#include "quenwick/state/Analytics.h"

namespace quenwick {
namespace {

// All four spellings are in use.
constexpr std::array kDomainKeys = {
    "quen_wick_universal_link_domains", "quene_wick_universal_link_domains",
    "quenwick_universal_link_domains", "quenewick_universal_link_domains"};

/// The value as a list of texts; none where it is anything else.
std::optional<std::vector<std::string>> textsOf(const Value* value) {
  const auto* list = value ? value->as<List>() : nullptr;
  if (!list) return std::nullopt;
  std::vector<std::string> texts;
  for (const auto& entry : *list) {
    const auto* text = entry.as<std::string>();
    if (!text) return std::nullopt;
    texts.push_back(*text);
  }
  return texts;
}

/// A list as it is printed: ["a", "b"].
std::string printed(const std::vector<std::string>& texts) {
  std::string out = "[";
  for (const char* separator = ""; const auto& text : texts) {
    out += separator + platform::debugQuoted(text);
    separator = ", ";
  }
  return out + "]";
}

/// The link on the pasteboard, which is read no further than it says that it holds one.
platform::Task<std::optional<std::string>> linkOn(
    std::shared_ptr<platform::Pasteboard> pasteboard) {
  if (co_await pasteboard->hasURLs()) {
    if (auto url = co_await pasteboard->url()) co_return url->absoluteString();
  }
  if (!co_await pasteboard->hasStrings()) co_return std::nullopt;
  auto text = co_await pasteboard->string();
  co_return text&& URL::parse(*text) ? text : std::nullopt;
}

platform::Task<void> checkPasteboard(
    std::function<void(const std::optional<std::string>&)> completion) {
  std::optional<std::string> link;
  if (auto pasteboard = platform::Pasteboard::general()) link = co_await linkOn(pasteboard);
  if (link) QWClient::handleUniversalLink(*link);
  if (completion) HostCalls::shared().post([completion, link] { completion(link); });
}

bool isLink(const std::optional<std::string>& text) { return text && URL::parse(*text); }

bool isBrowsing(const NSUserActivity& activity) {
  return activity.activityType == NSUserActivityTypeBrowsingWeb && activity.webpageURL;
}

}  // namespace

void QWClient::registerDeeplinkDomains(const std::vector<std::string>& domains) {
  if (!enter()) return;
  Logger::debug(QWLogType::deeplink, "Registering Domains: " + printed(domains));
  LinkIntake::shared().handleableLinks().insertDomains(domains);
}

void QWClient::registerDeeplinkDomainsFromPlist(const Bundle& bundle) {
  if (!enter()) return;
  const auto& info = bundle.infoDictionary();
  for (const auto* key : kDomainKeys) {
    if (auto domains = textsOf(info.find(key))) return registerDeeplinkDomains(*domains);
    Logger::debug(QWLogType::deeplink,
                  "Could not find domains in Info.plist for key - " + std::string(key));
  }
}

std::set<std::string> QWClient::domains() {
  return enter() ? LinkIntake::shared().handleableLinks().domains() : std::set<std::string>();
}

bool QWClient::canHandleURL(std::string_view url) {
  return enter() && LinkIntake::shared().canHandle(url);
}

bool QWClient::handleUniversalLink(std::string_view url) {
  return enter() && LinkIntake::shared().handle(url);
}

bool QWClient::handleUniversalLink(const NSUserActivity& activity) {
  return enter() && isBrowsing(activity) && handleUniversalLink(*activity.webpageURL);
}

bool QWClient::handleUniversalLink(const UISceneConnectionOptions& options) {
  if (!enter()) return false;
  auto browsing = std::ranges::find_if(options.userActivities, isBrowsing);
  return browsing != options.userActivities.end() && handleUniversalLink(*browsing);
}

bool QWClient::handleURLFromLaunchOptions(const LaunchOptions& options) {
  if (!enter()) return false;
  const auto* value = options.find(UIApplicationLaunchOptionsURLKey);
  const auto* url = value ? value->as<std::string>() : nullptr;
  if (!url || !URL::parse(*url)) {
    Logger::debug(QWLogType::deeplink, "App not opened from a URL");
    return false;
  }
  Logger::debug(QWLogType::deeplink, "Found URL in launch options");
  return handleUniversalLink(*url);
}

void QWClient::checkPasteboardOnInstall(
    std::function<void(const std::optional<std::string>&)> completion) {
  if (!enter()) return;
  shared();  // which makes the install's identifier: only then is it known whether it is the first
  if (Analytics::shared().isFirstInstall()) {
    platform::startTask(checkPasteboard(std::move(completion)));
  } else if (completion) {
    HostCalls::shared().post([completion = std::move(completion)] { completion(std::nullopt); });
  }
}

bool QWClient::paste(const std::vector<NSItemProvider>& itemProviders) {
  if (!enter()) return false;
  for (const auto& provider : itemProviders) {
    if (isLink(provider.url)) return handleUniversalLink(*provider.url);
    if (isLink(provider.text)) return handleUniversalLink(*provider.text);
  }
  return false;
}

void QWClient::resolve(std::string_view url, DeeplinkHandler completion,
                       const ResolveOptions& options) {
  if (!enter()) return;
  auto call = [completion = std::move(completion)](const DeeplinkResult& result) {
    if (completion) HostCalls::shared().post([completion, result] { completion(result); });
  };
  LinkIntake::shared().resolve(url, options, std::move(call));
}

std::future<DeeplinkResult> QWClient::resolve(std::string_view url, const ResolveOptions& options) {
  auto promise = std::make_shared<std::promise<DeeplinkResult>>();
  auto future = promise->get_future();
  if (enter()) {
    LinkIntake::shared().resolve(
        url, options, [promise](const DeeplinkResult& result) { promise->set_value(result); });
  } else {
    promise->set_value(LinkIntake::failure(url, "The library was shut down"));
  }
  return future;
}

std::optional<std::string> QWClient::storedDeeplink() {
  return enter() ? LinkIntake::shared().stored().value() : std::nullopt;
}

AnyPublisher<std::optional<std::string>> QWClient::storedDeeplinkPublisher() {
  return AnyPublisher<std::optional<std::string>>([](auto receive) {
    return enter() ? LinkIntake::shared().stored().subscribe(std::move(receive)) : Cancellable();
  });
}

void QWClient::addHandleablePaths(const std::map<std::string, std::vector<std::string>>& paths) {
  if (enter()) LinkIntake::shared().handleableLinks().addPaths(paths);
}

void QWClient::removeHandleablePaths(const std::string& host) {
  if (enter()) LinkIntake::shared().handleableLinks().removePaths(host);
}

void QWClient::clearHandleablePaths() {
  if (enter()) LinkIntake::shared().handleableLinks().clearPaths();
}

std::map<std::string, std::vector<std::string>> QWClient::handleablePaths() {
  return enter() ? LinkIntake::shared().handleableLinks().paths() : HandleableLinks::Paths();
}

std::optional<std::string> QWClient::qwU() {
  return enter() ? Analytics::shared().qwu() : std::nullopt;
}

void QWClient::setQWU(std::optional<std::string> value) {
  if (enter()) Analytics::shared().setQWU(std::move(value));
}

}  // namespace quenwick
