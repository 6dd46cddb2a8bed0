#pragma once

#include <optional>
#include <string>
#include <tuple>

#include "quenwick/API/Stack/Coding.h"
#include "quenwick/platform/URL.h"

namespace quenwick {

/// What the handshake yields: where behavioural events go, and the credential for it. The token
/// is a secret.
struct BehavioralVerificationContainer {
  std::string endpoint;
  std::string token;
  /// Names the token.
  std::string identifier;

  /// None where the endpoint is no URL.
  std::optional<platform::URL> endpointURL() const;

  static constexpr auto fields() {
    using Self = BehavioralVerificationContainer;
    return std::tuple{Field{"behavioral_endpoint_url", &Self::endpoint},
                      Field{"behavioral_endpoint_api_token", &Self::token},
                      Field{"behavioral_endpoint_api_token_identifier", &Self::identifier}};
  }

  friend bool operator==(const BehavioralVerificationContainer&,
                         const BehavioralVerificationContainer&) = default;
};

}  // namespace quenwick
