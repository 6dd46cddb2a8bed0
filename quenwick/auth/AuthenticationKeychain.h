#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quenwick/auth/Keychain.h"

namespace quenwick {

/// Where every secret of the library is kept.
struct AuthenticationKeychain {
  static constexpr std::string_view name = "com.quenwick.sdk.authentication_keychain";

  static const Keychain& standard();

  /// The host's API key.
  static std::optional<std::string> behaviorVerificationAPIToken();
  /// Nothing deletes it.
  static void setBehaviorVerificationAPIToken(const std::optional<std::string>& token);
};

}  // namespace quenwick
