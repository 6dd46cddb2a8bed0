#pragma once

#include <exception>
#include <optional>

#include "quenwick/platform/URLRequest.h"

namespace quenwick {

/// Anything that may yield a request to be loaded.
class URLRequestConvertible {
 public:
  virtual ~URLRequestConvertible() = default;

  /// Throws the error that kept the request from being built.
  virtual platform::URLRequest asURLRequest() const = 0;

  /// The same request, or none where building it throws.
  std::optional<platform::URLRequest> urlRequest() const {
    try {
      return asURLRequest();
    } catch (const std::exception&) {
      return std::nullopt;
    }
  }
};

}  // namespace quenwick
