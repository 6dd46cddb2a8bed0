#pragma once

#include <memory>
#include <optional>
#include <string>

#include "quenwick/auth/AuthenticationService.h"
#include "quenwick/platform/Clock.h"
#include "quenwick/platform/Error.h"
#include "quenwick/platform/Task.h"

namespace quenwick {

/// Gives requests an access token that will hold for another half a minute, renewing it where it
/// must. Callers that come while a renewal runs share it. From any thread.
class AuthenticationTokenManager {
 public:
  class TokenError : public platform::Error {
   public:
    enum class Code { missingToken, invalidToken };
    explicit TokenError(Code code);
    Code code() const { return code_; }

   private:
    Code code_;
  };

  explicit AuthenticationTokenManager(std::shared_ptr<AuthenticationService> service);
  AuthenticationTokenManager(std::shared_ptr<AuthenticationService> service,
                             std::shared_ptr<const platform::Clock> clock);
  ~AuthenticationTokenManager();

  /// The service that renews.
  const std::shared_ptr<AuthenticationService>& authenticationService() const;

  std::optional<std::string> accessToken() const;
  std::optional<std::string> refreshToken() const;
  /// Seconds.
  std::optional<double> tokenExpirationDuration() const;
  /// Seconds since 1970.
  std::optional<double> tokenExpirationTimeInterval() const;

  /// The stored token, or a new one where that is about to expire. Throws `TokenError`.
  platform::Task<std::string> validToken();

  /// A new token. Throws `TokenError`.
  platform::Task<std::string> renewedToken();

 private:
  class State;
  std::shared_ptr<State> state_;
};

}  // namespace quenwick
