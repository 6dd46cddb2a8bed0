#include "quenwick/client/LinkIntake.h"

#include <utility>

#include "quenwick/client/DeeplinkHandlers.h"
#include "quenwick/client/Ending.h"
#include "quenwick/client/HostCalls.h"
#include "quenwick/client/Lifecycle.h"
#include "quenwick/deeplink/DeeplinkManager.h"
#include "quenwick/deeplink/LinkOperations.h"
#include "quenwick/deeplink/URLSessionRedirectDelegate.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/Text.h"

namespace quenwick {
namespace {

using platform::URL;

constexpr std::size_t kLongestShown = 2000;

std::string shown(std::string_view link) { return platform::shown(link, kLongestShown); }

/// The outcome, whatever becomes of it.
platform::Task<DeeplinkResult> outcomeOf(DeeplinkManager manager, std::stop_token stop) {
  try {
    co_return (co_await manager.resolve(std::move(stop))).absoluteString();
  } catch (const DeeplinkResolutionError& error) {
    co_return error;
  } catch (...) {
    auto reason = platform::errorFrom(std::current_exception())->localizedDescription();
    co_return DeeplinkResolutionError::failure(manager.url().absoluteString(), reason);
  }
}

platform::Task<void> resolveInto(DeeplinkManager manager, std::shared_ptr<Ending> ending,
                                 std::function<void(const DeeplinkResult&)> completion) {
  completion(co_await outcomeOf(std::move(manager), ending->token()));
}

}  // namespace

LinkIntake& LinkIntake::shared() {
  static auto& instance = *new LinkIntake;
  return instance;
}

std::shared_ptr<platform::URLSession> LinkIntake::session() {
  std::call_once(hasSession_, [this] {
    session_ = platform::URLSession::make(Lifecycle::shared().sessionConfiguration(),
                                          URLSessionRedirectDelegate::shared());
  });
  return session_;
}

bool LinkIntake::canHandle(std::string_view link) const {
  auto url = URL::parse(std::string(link));
  if (url) return handleableLinks_.contains(*url);
  Logger::debug(QWLogType::deeplink, "Could not extract host from url " + shown(link));
  return false;
}

bool LinkIntake::handle(std::string_view link) {
  if (!canHandle(link)) {
    Logger::debug(QWLogType::deeplink, "QWClient cannot handle the URL: " + shown(link));
    return false;
  }
  resolve(link, {}, [this](const DeeplinkResult& result) {
    HostCalls::shared().post([this, result] { deliver(result); });
  });
  return true;
}

DeeplinkResolutionError LinkIntake::failure(std::string_view link, std::string_view reason) {
  auto url = URL::parse(std::string(link));
  auto text = url ? ensureHTTPS(*url).absoluteString() : shown(link);
  return DeeplinkResolutionError::failure(text, std::string(reason));
}

void LinkIntake::resolve(std::string_view link, const ResolveOptions& options,
                         std::function<void(const DeeplinkResult&)> completion) {
  auto url = URL::parse(std::string(link));
  if (!url) {
    return platform::pool().post(
        [completion = std::move(completion),
         result = DeeplinkResult(failure(link, "The link is not a URL"))] { completion(result); });
  }
  platform::startTask(resolveInto(DeeplinkManager(*url, session()),
                                  std::make_shared<Ending>(options.stop, options.deadline),
                                  std::move(completion)));
}

void LinkIntake::deliver(const DeeplinkResult& result) {
  if (const auto* link = std::get_if<std::string>(&result)) stored_->send(*link);
  QWClient::shared()->deeplinkHandlers().call(result);
}

}  // namespace quenwick
