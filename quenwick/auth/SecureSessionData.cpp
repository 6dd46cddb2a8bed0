#include "quenwick/auth/SecureSessionData.h"

#include <algorithm>
#include <array>

namespace quenwick {
namespace {

/// In the order of the enumeration.
constexpr std::array<std::string_view, 8> kRawValues = {
    "com.quenwick.sdk.token.accessToken",
    "com.quenwick.sdk.token.refreshToken",
    "com.quenwick.sdk.token.expiresIn",
    "com.quenwick.sdk.token.expiresAt",
    "com.quenwick.sdk.behavior.verification.apiToken",
    "com.quenwick.sdk.behavior.endpoint",
    "com.quenwick.sdk.behavior.apiToken",
    "com.quenwick.sdk.behavior.apiTokenExpiresAt",
};

}  // namespace

std::string_view rawValue(SecureSessionData item) {
  return kRawValues.at(static_cast<std::size_t>(item));
}

std::optional<SecureSessionData> secureSessionData(std::string_view rawValue) {
  const auto* found = std::ranges::find(kRawValues, rawValue);
  if (found == kRawValues.end()) return std::nullopt;
  return static_cast<SecureSessionData>(found - kRawValues.begin());
}

}  // namespace quenwick
