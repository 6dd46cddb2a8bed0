#include "quenwick/auth/AuthenticationTokenManager.h"

#include <cstdint>
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

  struct Moment {
    bool isRenewing = false;
    /// How many renewals have ended so far.
    std::uint64_t ended = 0;
    friend bool operator==(const Moment&, const Moment&) = default;
  };
  Moment moment() const {
    std::lock_guard lock(mutex_);
    return {refreshTask_ != nullptr, ended_};
  }

  /// Newer systems count from 1970. Older ones count from 2001 and so keep a token for longer: the
  /// stored expiry counts from 1970 in either case.
  bool isFresh(const std::optional<double>& expiresAt) const {
    double now = platform::secondsSince1970(clock_->now());
    if (!platform::systemAtLeast(kClockVersion)) now -= kSecondsFrom1970To2001;
    return now < expiresAt.value_or(0) - kLeastValidity;
  }

  const std::shared_ptr<AuthenticationService>& service() const { return service_; }

  using Renewed = std::optional<std::string>;

  /// Waits for the renewal in flight. Where there is none, one is started if `mayStart` is so and
  /// as many renewals have ended as the caller knew of, or it names none; else the answer is none,
  /// and the caller looks again.
  Continuation<Renewed>::Awaiter joinRenewal(bool mayStart, std::optional<std::uint64_t> known) {
    return platform::suspend<Renewed>([=, self = shared_from_this()](auto continuation) {
      bool isFirst = false;
      {
        std::lock_guard lock(self->mutex_);
        isFirst = !self->refreshTask_ && mayStart && known.value_or(self->ended_) == self->ended_;
        if (isFirst) self->refreshTask_ = std::make_unique<Waiting>();
        if (self->refreshTask_) self->refreshTask_->push_back(continuation);
        if (!self->refreshTask_) return continuation.resume(std::nullopt);
      }
      if (isFirst) platform::startTask(renew(self));
    });
  }

 private:
  using Waiting = std::vector<Continuation<Renewed>>;

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
    for (const auto& waiting : self->endRenewal()) waiting.resume(std::optional(token));
  }

  Waiting endRenewal() {
    std::lock_guard lock(mutex_);
    ++ended_;
    return std::move(*std::exchange(refreshTask_, nullptr));
  }

  const std::shared_ptr<AuthenticationService> service_;
  const std::shared_ptr<const platform::Clock> clock_;
  mutable std::mutex mutex_;
  std::unique_ptr<Waiting> refreshTask_;
  std::uint64_t ended_ = 0;
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

const std::shared_ptr<AuthenticationService>& AuthenticationTokenManager::authenticationService()
    const {
  return state_->service();
}

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
  for (;;) {
    auto moment = state->moment();
    if (!moment.isRenewing) {
      auto token = co_await platform::onKeysThread(&storedToken);
      // A renewal in the meantime may have written one half of what was read.
      if (state->moment() != moment) continue;
      if (!token.text) throw missingToken();
      if (state->isFresh(token.expiresAt)) co_return *std::move(token.text);
    }
    auto renewed = co_await state->joinRenewal(!moment.isRenewing, moment.ended);
    if (renewed) co_return *std::move(renewed);
  }
}

Task<std::string> AuthenticationTokenManager::renewedToken() {
  auto state = state_;
  co_return (co_await state->joinRenewal(true, std::nullopt)).value();
}

}  // namespace quenwick
