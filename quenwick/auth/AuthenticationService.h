#pragma once

#include <string>

#include "quenwick/platform/Task.h"

namespace quenwick {

/// Renews access tokens in whichever way the application's service has for it.
class AuthenticationService {
 public:
  virtual ~AuthenticationService() = default;

  /// The new access token; throws where there is none to be had.
  virtual platform::Task<std::string> renewToken() = 0;
};

}  // namespace quenwick
