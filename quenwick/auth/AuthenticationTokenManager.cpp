#include "quenwick/auth/AuthenticationTokenManager.h"

namespace quenwick {

AuthenticationTokenManager::TokenError::TokenError(Code code)
    : Error(code == Code::missingToken ? "There is no access token"
                                       : "The access token is invalid"),
      code_(code) {}

platform::Task<std::string> AuthenticationTokenManager::validToken() {
  throw TokenError(TokenError::Code::missingToken);
  co_return {};
}

}  // namespace quenwick
