#pragma once

#include <optional>

#include "quenwick/API/Stack/URLRequestConvertible.h"
#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/URLRequest.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

/// Parameters written as one JSON text in the body. Each form gives the request a Content-Type
/// unless it has one, and without parameters the request as it is. Each throws `APIError`
/// (`JSONEncodingFailed`) for what JSON cannot hold: a number that is not finite, a text that is
/// not UTF-8, more than 512 levels. And each throws what keeps the request from being built.
struct JSONEncoding {
  platform::JSONWritingOptions options = platform::JSONWritingOptions::compact;

  static const JSONEncoding defaultEncoding;
  static const JSONEncoding prettyPrinted;

  platform::URLRequest encode(platform::URLRequest request,
                              const std::optional<platform::Dictionary>& parameters) const;
  platform::URLRequest encode(const URLRequestConvertible& request,
                              const std::optional<platform::Dictionary>& parameters) const {
    return encode(request.asURLRequest(), parameters);
  }

  platform::URLRequest encodeWithArray(platform::URLRequest request,
                                       const std::optional<platform::List>& array) const;
  platform::URLRequest encodeWithArray(const URLRequestConvertible& request,
                                       const std::optional<platform::List>& array) const {
    return encodeWithArray(request.asURLRequest(), array);
  }

  /// Any JSON value, a text or a number too.
  platform::URLRequest encodeWithJSONObject(platform::URLRequest request,
                                            const std::optional<platform::Value>& object) const;
  platform::URLRequest encodeWithJSONObject(const URLRequestConvertible& request,
                                            const std::optional<platform::Value>& object) const {
    return encodeWithJSONObject(request.asURLRequest(), object);
  }

  friend bool operator==(const JSONEncoding&, const JSONEncoding&) = default;
};

inline constexpr JSONEncoding JSONEncoding::defaultEncoding{};
inline constexpr JSONEncoding JSONEncoding::prettyPrinted{
    platform::JSONWritingOptions::prettyPrinted};

}  // namespace quenwick
