#include "quenwick/deeplink/DeeplinkManager.h"

#include <utility>

#include "quenwick/API/Stack/HTTPHeader.h"
#include "quenwick/API/Stack/RequestExtensions.h"
#include "quenwick/deeplink/DeeplinkResolutionError.h"
#include "quenwick/deeplink/LinkOperations.h"
#include "quenwick/deeplink/URLSessionRedirectDelegate.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/Text.h"
#include "quenwick/platform/Writer.h"

namespace quenwick {
namespace {

using platform::DataResponse;
using platform::URL;

constexpr double kTimeout = 60;

platform::URLRequest requestFor(const URL& url) {
  platform::URLRequest request{.url = url, .timeoutInterval = kTimeout};
  setHeaders(request, {HTTPHeader::defaultUserAgent()});
  return request;
}

platform::Task<URL> load(std::shared_ptr<platform::URLSession> session, URL url,
                         std::stop_token stop) {
  // No waiting inside a handler: the error is looked at once it is caught.
  std::exception_ptr failure;
  try {
    auto outcome = co_await session->data(requestFor(url), stop);
    co_return DeeplinkManager::destination(outcome, url);
  } catch (const platform::PlatformError&) {
    failure = std::current_exception();
  }
  co_return DeeplinkManager::destination(*platform::errorFrom(failure), url);
}

platform::Task<URL> resolveAndKeep(std::shared_ptr<platform::URLSession> session, URL url,
                                   std::stop_token stop) {
  std::exception_ptr failure;
  std::optional<URL> destination;
  try {
    destination = co_await load(std::move(session), std::move(url), stop);
  } catch (const DeeplinkResolutionError&) {
    failure = std::current_exception();
  }
  co_await platform::writerIsDone(stop);
  if (failure) std::rethrow_exception(failure);
  co_return *std::move(destination);
}

}  // namespace

DeeplinkManager::DeeplinkManager(const URL& url, std::shared_ptr<platform::URLSession> session)
    : session_(session ? std::move(session)
                       : platform::URLSession::make({}, URLSessionRedirectDelegate::shared())),
      url_(ensureHTTPS(url)) {}

platform::Task<URL> DeeplinkManager::resolve(std::stop_token stop) const {
  return resolveAndKeep(session_, url_, std::move(stop));
}

URL DeeplinkManager::destination(const DataResponse& outcome, const URL& link) {
  constexpr auto kCategory = QWLogType::deeplink;
  const auto* http = dynamic_cast<const platform::HTTPURLResponse*>(outcome.response.get());
  if (http && http->url && http->statusCode >= 200 && http->statusCode <= 399) return *http->url;

  Logger::debug(kCategory, "Could not resolve deeplink");
  if (!http || !http->url) {
    Logger::debug(kCategory, "Deeplink Resolution did not contain a URL");
    throw DeeplinkResolutionError::unknown();
  }
  if (!platform::isUTF8(outcome.data)) {
    throw DeeplinkResolutionError::failure(link.absoluteString(), "");
  }
  Logger::error(kCategory, outcome.data);
  throw DeeplinkResolutionError::failure(link.absoluteString(), outcome.data);
}

URL DeeplinkManager::destination(const platform::Error& error, const URL& link) {
  constexpr auto kCategory = QWLogType::deeplink;
  auto platformError = error.platformError();
  const auto& userInfo = platformError.userInfo();
  auto failing = userInfo.find(platform::NSURLErrorFailingURLStringErrorKey);
  if (failing != userInfo.end()) {
    if (auto url = URL::parse(failing->second)) return *std::move(url);
  }
  Logger::debug(kCategory, "An error occurred while attempting to resolve a Deeplink");
  Logger::error(kCategory, error.localizedDescription());
  throw DeeplinkResolutionError::failure(link.absoluteString(), error.localizedDescription());
}

}  // namespace quenwick
