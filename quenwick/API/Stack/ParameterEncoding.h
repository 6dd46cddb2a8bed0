#pragma once

#include <optional>
#include <utility>
#include <variant>

#include "quenwick/API/Stack/EncodingType.h"
#include "quenwick/API/Stack/JSONEncoding.h"
#include "quenwick/API/Stack/URLEncoding.h"

namespace quenwick {

/// How parameters are put into a request.
using ParameterEncoding = std::variant<URLEncoding, JSONEncoding>;

/// The request with the parameters put in by that encoding; throws what the encoding throws.
inline platform::URLRequest encode(const ParameterEncoding& encoding, platform::URLRequest request,
                                   const std::optional<platform::Dictionary>& parameters) {
  return std::visit([&](const auto& kind) { return kind.encode(std::move(request), parameters); },
                    encoding);
}
inline platform::URLRequest encode(const ParameterEncoding& encoding,
                                   const URLRequestConvertible& request,
                                   const std::optional<platform::Dictionary>& parameters) {
  return encode(encoding, request.asURLRequest(), parameters);
}

/// The encoding, fully configured, that the type stands for.
inline ParameterEncoding parameterEncoding(EncodingType type) {
  switch (type) {
    case EncodingType::json:
      break;
    case EncodingType::urlEncoding:
      return URLEncoding::queryString;
    case EncodingType::httpBody:
      return URLEncoding::httpBody;
    case EncodingType::arrayEncoding:
      return URLEncoding{.arrayEncoding = URLEncoding::ArrayEncoding::noBrackets};
  }
  return JSONEncoding::defaultEncoding;
}

}  // namespace quenwick
