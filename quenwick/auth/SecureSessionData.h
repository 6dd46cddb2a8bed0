#pragma once

#include <optional>
#include <string_view>

namespace quenwick {

/// The items that the library keeps in the keychain, all of them in
/// `AuthenticationKeychain::standard`.
enum class SecureSessionData {
  accessToken,
  refreshToken,
  expiresIn,
  expiresAt,
  behaviorVerificationAPIToken,
  behaviorAPIEndpoint,
  behaviorAPIToken,
  behaviorAPITokenExpiresAt,
};

/// The key that the item is kept under.
std::string_view rawValue(SecureSessionData item);

/// The item of that key, if there is one.
std::optional<SecureSessionData> secureSessionData(std::string_view rawValue);

}  // namespace quenwick
