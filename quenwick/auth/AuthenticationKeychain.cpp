#include "quenwick/auth/AuthenticationKeychain.h"

#include "quenwick/auth/SecureSessionData.h"

namespace quenwick {
namespace {

constexpr auto kToken = SecureSessionData::behaviorVerificationAPIToken;

}  // namespace

const Keychain& AuthenticationKeychain::standard() {
  static const auto& instance = *new Keychain(std::string(name));
  return instance;
}

std::optional<std::string> AuthenticationKeychain::behaviorVerificationAPIToken() {
  return standard().string(rawValue(kToken));
}

void AuthenticationKeychain::setBehaviorVerificationAPIToken(
    const std::optional<std::string>& token) {
  if (token) {
    standard().set(std::string_view(*token), rawValue(kToken));
  } else {
    standard().removeObject(rawValue(kToken));
  }
}

}  // namespace quenwick
