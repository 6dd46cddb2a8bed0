#include "quenwick/deeplink/URLSessionRedirectDelegate.h"

#include <utility>

#include "quenwick/CoreData/CoreDataManager.h"
#include "quenwick/deeplink/LinkOperations.h"
#include "quenwick/platform/URLComponents.h"
#include "quenwick/platform/Writer.h"
#include "quenwick/state/Analytics.h"

namespace quenwick {
namespace {

using Answer = std::optional<platform::URLRequest>;

platform::Task<void> handOver(platform::Task<Answer> answer,
                              std::function<void(Answer)> completionHandler) {
  completionHandler(co_await answer);
}

}  // namespace

std::shared_ptr<URLSessionRedirectDelegate> URLSessionRedirectDelegate::shared() {
  static const auto& instance =
      *new std::shared_ptr<URLSessionRedirectDelegate>(new URLSessionRedirectDelegate);
  return instance;
}

platform::Task<Answer> URLSessionRedirectDelegate::urlSession(platform::URLSession&,
                                                              platform::URLSessionTask&,
                                                              platform::HTTPURLResponse,
                                                              platform::URLRequest newRequest) {
  if (!newRequest.url) co_return newRequest;
  setQWUFromDeeplink(*newRequest.url);
  setRulesPicKeyFromDeeplink(*newRequest.url);
  if (shouldHaltRedirects(*newRequest.url)) co_return std::nullopt;
  co_return newRequest;
}

void URLSessionRedirectDelegate::urlSession(platform::URLSession&, platform::URLSessionTask&,
                                            const platform::PlatformError*) {
  platform::writer().hurry();
}

void URLSessionRedirectDelegate::urlSession(platform::URLSession& session,
                                            platform::URLSessionTask& task,
                                            platform::HTTPURLResponse willPerformHTTPRedirection,
                                            platform::URLRequest newRequest,
                                            std::function<void(Answer)> completionHandler) {
  auto answer =
      urlSession(session, task, std::move(willPerformHTTPRedirection), std::move(newRequest));
  platform::startTask(handOver(std::move(answer), std::move(completionHandler)));
}

void URLSessionRedirectDelegate::setQWUFromDeeplink(const platform::URL& url) {
  auto value = qwuValue(url);
  if (value)
    Analytics::shared().setQWUDeeplink(*value, CoreDataManager::shared().backgroundContext());
}

void URLSessionRedirectDelegate::setRulesPicKeyFromDeeplink(const platform::URL& url) {
  auto key = findRPKey(platform::URLComponents(url).path());
  if (key) Analytics::shared().setRulesPicKey(*key);
}

}  // namespace quenwick
