#pragma once

#include <memory>
#include <optional>
#include <string>

#include "quenwick/API/APIService/APIService.h"
#include "tools/Arguments.h"
#include "tools/LoadingOptions.h"

namespace quenwick::tools {

/// How a handshake went: an endpoint, or the line that the client would log.
struct Verification {
  std::optional<std::string> endpoint = std::nullopt;
  /// Seconds since 1970.
  std::optional<double> expiresAt = std::nullopt;
  bool isFromCache = false;
  std::optional<std::string> error = std::nullopt;
};

/// The service that --service, --cacert and --connect-to name. Throws `UsageError`.
std::shared_ptr<APIService> serviceFrom(const Arguments& arguments);

/// The key of --api-key; throws `UsageError` where there is none.
std::string apiKeyFrom(const Arguments& arguments);

/// Runs the handshake, unless its last answer still holds, and waits for it.
Verification verify(APIService& service, const std::string& apiKey, const Deadline& deadline);

}  // namespace quenwick::tools
