#include "quenwick/client/DeeplinkHandlers.h"

#include "quenwick/logging/Logger.h"
#include "quenwick/platform/Executor.h"

namespace quenwick {
namespace {

void callCompatibly(const DeeplinkCompatibilityHandler& handler, const DeeplinkResult& result) {
  if (const auto* link = std::get_if<std::string>(&result)) {
    handler(*link, std::nullopt);
  } else {
    handler(std::nullopt, std::get<DeeplinkResolutionError>(result).nsError());
  }
}

}  // namespace

// The handler that was there before is destroyed without the lock: it is the host's.

void DeeplinkHandlers::setHandler(DeeplinkHandler handler) {
  std::lock_guard lock(mutex_);
  if (!isReleased_) handler_.swap(handler);
}

void DeeplinkHandlers::setCompatibilityHandler(DeeplinkCompatibilityHandler handler) {
  std::lock_guard lock(mutex_);
  if (!isReleased_) compatibilityHandler_.swap(handler);
}

void DeeplinkHandlers::release() {
  DeeplinkHandler handler;
  DeeplinkCompatibilityHandler compatibilityHandler;
  std::lock_guard lock(mutex_);
  isReleased_ = true;
  handler.swap(handler_);
  compatibilityHandler.swap(compatibilityHandler_);
}

void DeeplinkHandlers::call(const DeeplinkResult& result) const {
  DeeplinkHandler handler;
  DeeplinkCompatibilityHandler compatibilityHandler;
  {
    std::lock_guard lock(mutex_);
    handler = handler_;
    compatibilityHandler = compatibilityHandler_;
  }
  if (!handler && !compatibilityHandler) {
    Logger::log(QWLogType::deeplink, "A deeplink has an outcome, but no handler was set");
  }
  if (handler) platform::runWork([&] { handler(result); });
  if (compatibilityHandler) {
    platform::runWork([&] { callCompatibly(compatibilityHandler, result); });
  }
}

}  // namespace quenwick
