#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "quenwick/platform/URL.h"

namespace quenwick::platform {

/// Bytes of any kind.
using Bytes = std::string;

/// Header fields in the order in which they are sent or were received.
using HeaderFields = std::vector<std::pair<std::string, std::string>>;

/// How a load treats caches. Nothing is cached by this loader, so that every policy loads from
/// the server; all but the protocol's own also ask caches on the way to do so.
enum class CachePolicy { useProtocolCachePolicy = 0, reloadIgnoringLocalCacheData = 1 };

struct URLRequest {
  std::optional<URL> url;
  std::optional<std::string> httpMethod = "GET";
  HeaderFields headerFields = {};
  std::optional<Bytes> httpBody = std::nullopt;
  CachePolicy cachePolicy = CachePolicy::useProtocolCachePolicy;
  /// Seconds without any progress after which the load fails; the session's own where none.
  std::optional<double> timeoutInterval = std::nullopt;
};

/// What a server answered, without the body.
struct URLResponse {
  virtual ~URLResponse() = default;
  /// The URL of the request that this answers.
  std::optional<URL> url;
};

struct HTTPURLResponse : URLResponse {
  int statusCode = 0;
  HeaderFields headerFields;
};

/// The value of the first field whose name matches without regard to case, or null.
const std::string* headerField(const HeaderFields& fields, std::string_view name);

/// Whether a field of that name carries a credential, which is for one server alone.
bool isCredentialField(std::string_view name);

/// The request that follows a redirect answered to `request`, or none where the answer is no
/// redirect, its target does not parse, or a body would leave https for http. A POST becomes a GET
/// where the status says so, and credentials stay behind where the target lies with another server.
std::optional<URLRequest> redirectedRequest(const URLRequest& request,
                                            const HTTPURLResponse& response);

}  // namespace quenwick::platform
