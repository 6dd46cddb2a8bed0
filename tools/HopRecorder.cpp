#include "tools/HopRecorder.h"

#include <utility>

#include "quenwick/deeplink/LinkOperations.h"
#include "quenwick/platform/URLComponents.h"

namespace quenwick::tools {

using platform::URLRequest;

platform::Task<std::optional<URLRequest>> HopRecorder::urlSession(
    platform::URLSession& session, platform::URLSessionTask& task,
    platform::HTTPURLResponse willPerformHTTPRedirection, URLRequest newRequest) {
  auto now = std::chrono::steady_clock::now();
  {
    std::lock_guard lock(mutex_);
    const auto& url = *newRequest.url;
    hops_.push_back(
        {.status = willPerformHTTPRedirection.statusCode,
         .url = url.absoluteString(),
         .qwU = qwuValue(url),
         .rulesKey = findRPKey(platform::URLComponents(url).path()),
         .isHalted = shouldHaltRedirects(url),
         .milliseconds = std::chrono::duration<double, std::milli>(now - last_).count()});
    last_ = now;
  }
  co_return co_await URLSessionRedirectDelegate::urlSession(
      session, task, std::move(willPerformHTTPRedirection), std::move(newRequest));
}

void HopRecorder::urlSession(platform::URLSession&, platform::URLSessionTask& task,
                             const platform::PlatformError* didCompleteWithError) {
  const auto* answer = dynamic_cast<const platform::HTTPURLResponse*>(task.response.get());
  std::lock_guard lock(mutex_);
  if (answer) status_ = answer->statusCode;
  if (!didCompleteWithError) return;
  loadError_ = std::make_shared<platform::PlatformError>(*didCompleteWithError);
}

std::vector<Hop> HopRecorder::hops() const {
  std::lock_guard lock(mutex_);
  return hops_;
}

std::optional<int> HopRecorder::status() const {
  std::lock_guard lock(mutex_);
  return status_;
}

std::shared_ptr<const platform::PlatformError> HopRecorder::loadError() const {
  std::lock_guard lock(mutex_);
  return loadError_;
}

}  // namespace quenwick::tools
