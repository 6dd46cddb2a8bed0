#pragma once

#include <memory>
#include <utility>

#include "quenwick/API/Stack/APISessionManager.h"

namespace quenwick {

/// Where the requester of one API comes from.
class APISource {
 public:
  struct ManagerOptions {
    /// Seconds without any progress, and seconds in all, after which a request fails.
    double requestTimeout = 60;
    double resourceTimeout = 60;
    platform::CachePolicy cachePolicy = platform::CachePolicy::useProtocolCachePolicy;
    /// What else holds for the session: trust, connections, the largest body.
    platform::URLSessionConfiguration basis = {};
  };

  virtual ~APISource() = default;

  /// The base of the API's URLs.
  virtual const platform::URL& url() const = 0;

  /// A manager with a new session of these options.
  static std::shared_ptr<APISessionManager> manager(ManagerOptions options) {
    auto configuration = std::move(options.basis);
    configuration.requestTimeout = options.requestTimeout;
    configuration.resourceTimeout = options.resourceTimeout;
    configuration.cachePolicy = options.cachePolicy;
    return std::make_shared<APISessionManager>(std::move(configuration));
  }
};

}  // namespace quenwick
