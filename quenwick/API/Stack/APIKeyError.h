#pragma once

#include "quenwick/platform/Error.h"

namespace quenwick {

/// No API key is configured, so that nothing can be asked of the service.
class APIKeyError : public platform::Error {
 public:
  static APIKeyError missing() { return APIKeyError(); }

 private:
  APIKeyError() : Error("No API key is configured") {}
};

}  // namespace quenwick
