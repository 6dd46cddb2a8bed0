#include "quenwick/auth/AuthenticationTokenManager.h"

#include <mutex>
#include <utility>
#include <vector>

#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/SecureSessionData.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/KeysThread.h"
#include "quenwick/platform/System.h"
#include "quenwick/platform/Text.h"

namespace quenwick {
namespace {

using platform::Continuation;
using platform::Task;

constexpr auto kCategory = QWLogType::behaviorEvent;
constexpr double kLeastValidity = 30;  // seconds
constexpr double kSecondsFrom1970To2001 = 978'307'200;
constexpr int kClockVersion = 15;

std::optional<std::string> stored(SecureSessionData item) {
  return AuthenticationKeychain::standard().string(rawValue(item));
}

std::optional<double> storedNumber(SecureSessionData item) {
  auto text = stored(item);
  return text ? platform::parsedDouble(*text) : std::nullopt;
}

struct StoredToken {
  std::optional<std::string> text;
  std::optional<double> expiresAt;
};

StoredToken storedToken() {
  return {stored(SecureSessionData::accessToken), storedNumber(SecureSessionData::expiresAt)};
}

AuthenticationTokenManager::TokenError missingToken() {
  return AuthenticationTokenManager::TokenError(
      AuthenticationTokenManager::TokenError::Code::missingToken);
}

}  // namespace

/// The renewal in flight and those who wait for it. Callers run on several threads; what would be
/// an actor's confinement is the mutex, held for a few instructions.
class AuthenticationTokenManager::State : public std::enable_shared_from_this<State> {
 public:
  State(std::shared_ptr<AuthenticationService> service,
        std::shared_ptr<const platform::Clock> clock)
      : service_(std::move(service)), clock_(std::move(clock)) {}

  bool isRenewing() const {
    std::lock_guard lock(mutex_);
    return refreshTask_ != nullptr;
  }

  /// Newer systems count from 1970. Older ones count from 2001 and so keep a token for longer: the
  /// stored expiry counts from 1970 in either case.
  bool isFresh(const std::optional<double>& expiresAt) const {
    double now = platform::secondsSince1970(clock_->now());
    if (!platform::systemAtLeast(kClockVersion)) now -= kSecondsFrom1970To2001;
    return now < expiresAt.value_or(0) - kLeastValidity;
  }

  /// Waits for the renewal in flight, which is started where there is none.
  Continuation<std::string>::Awaiter joinRenewal() {
    return platform::suspend<std::string>([self = shared_from_this()](auto continuation) {
      bool isFirst = false;
      {
        std::lock_guard lock(self->mutex_);
        isFirst = !self->refreshTask_;
        if (isFirst) self->refreshTask_ = std::make_unique<Waiting>();
        self->refreshTask_->push_back(continuation);
      }
      if (isFirst) platform::startTask(renew(self));
    });
  }

 private:
  using Waiting = std::vector<Continuation<std::string>>;

  static Task<void> renew(std::shared_ptr<State> self) {
    Logger::log(kCategory, "Attempting to renew the access token");
    platform::ErrorPointer error;
    std::string token;
    try {
      token = co_await self->service_->renewToken();
    } catch (...) {
      error = platform::errorFrom(std::current_exception());
    }
    if (error) {
      Logger::error(kCategory, error->localizedDescription());
      Logger::log(kCategory, "Token failed to renew 👎");
      for (const auto& waiting : self->endRenewal()) {
        waiting.fail(std::make_exception_ptr(missingToken()));
      }
      co_return;
    }
    co_await platform::onKeysThread([token] {
      AuthenticationKeychain::standard().set(std::string_view(token),
                                             rawValue(SecureSessionData::accessToken));
    });
    Logger::log(kCategory, "Token was successfully renewed 👍");
    for (const auto& waiting : self->endRenewal()) waiting.resume(token);
  }

  Waiting endRenewal() {
    std::lock_guard lock(mutex_);
    return std::move(*std::exchange(refreshTask_, nullptr));
  }

  const std::shared_ptr<AuthenticationService> service_;
  const std::shared_ptr<const platform::Clock> clock_;
  mutable std::mutex mutex_;
  std::unique_ptr<Waiting> refreshTask_;
};

AuthenticationTokenManager::TokenError::TokenError(Code code)
    : Error(code == Code::missingToken ? "There is no access token"
                                       : "The access token is invalid"),
      code_(code) {}

AuthenticationTokenManager::AuthenticationTokenManager(
    std::shared_ptr<AuthenticationService> service)
    : AuthenticationTokenManager(std::move(service), platform::Clock::system()) {}

AuthenticationTokenManager::AuthenticationTokenManager(
    std::shared_ptr<AuthenticationService> service, std::shared_ptr<const platform::Clock> clock)
    : state_(std::make_shared<State>(std::move(service), std::move(clock))) {}

AuthenticationTokenManager::~AuthenticationTokenManager() = default;

std::optional<std::string> AuthenticationTokenManager::accessToken() const {
  return stored(SecureSessionData::accessToken);
}

std::optional<std::string> AuthenticationTokenManager::refreshToken() const {
  return stored(SecureSessionData::refreshToken);
}

std::optional<double> AuthenticationTokenManager::tokenExpirationDuration() const {
  return storedNumber(SecureSessionData::expiresIn);
}

std::optional<double> AuthenticationTokenManager::tokenExpirationTimeInterval() const {
  return storedNumber(SecureSessionData::expiresAt);
}

Task<std::string> AuthenticationTokenManager::validToken() {
  auto state = state_;  // the manager may go while this waits
  if (state->isRenewing()) co_return co_await state->joinRenewal();
  auto token = co_await platform::onKeysThread(&storedToken);
  if (!token.text) throw missingToken();
  if (state->isFresh(token.expiresAt)) co_return *token.text;
  co_return co_await state->joinRenewal();
}

Task<std::string> AuthenticationTokenManager::renewedToken() {
  auto state = state_;
  co_return co_await state->joinRenewal();
}

}  // namespace quenwick
