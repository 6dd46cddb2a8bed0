#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quenwick/API/Stack/HTTPMethod.h"
#include "quenwick/API/Stack/URLRequestConvertible.h"
#include "quenwick/platform/URLRequest.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

/// Parameters written as the items of a query: "a=x%20y&b%5Bc%5D=1". Keys of the map are sorted,
/// those of maps within it stay in their order. Text that is not UTF-8 is escaped byte by byte, so
/// that no text can add an item or break off; JSON refuses it.
struct URLEncoding {
  /// Where they go: into the URL's query, into the body, or where the method has them.
  enum class Destination { methodDependent, queryString, httpBody };
  /// The key that each element of an array is sent under: "key[]", or the bare key.
  enum class ArrayEncoding { brackets, noBrackets };
  /// How a boolean is sent: "1" and "0", or "true" and "false".
  enum class BoolEncoding { numeric, literal };

  Destination destination = Destination::methodDependent;
  ArrayEncoding arrayEncoding = ArrayEncoding::brackets;
  BoolEncoding boolEncoding = BoolEncoding::numeric;

  static const URLEncoding defaultEncoding;
  static const URLEncoding queryString;
  static const URLEncoding httpBody;

  /// The request with the parameters behind what its URL's query holds already, or as its body,
  /// with a Content-Type unless it has one; without parameters the request as it is. Throws
  /// `APIError` (`MissingURL`) and what keeps the request from being built.
  platform::URLRequest encode(platform::URLRequest request,
                              const std::optional<platform::Dictionary>& parameters) const;
  platform::URLRequest encode(const URLRequestConvertible& request,
                              const std::optional<platform::Dictionary>& parameters) const {
    return encode(request.asURLRequest(), parameters);
  }

  /// The parameters as the text of a query. Of any depth.
  std::string query(const platform::Dictionary& parameters) const;

  friend bool operator==(const URLEncoding&, const URLEncoding&) = default;
};

inline constexpr URLEncoding URLEncoding::defaultEncoding{};
inline constexpr URLEncoding URLEncoding::queryString{.destination = Destination::queryString};
inline constexpr URLEncoding URLEncoding::httpBody{.destination = Destination::httpBody};

/// Whether the parameters of a request of that method go into its URL; GET, HEAD and DELETE are
/// the methods that have them there.
bool encodesParametersInURL(URLEncoding::Destination destination, const HTTPMethod& method);

/// The key that an element of the array under `key` is sent under.
std::string encode(URLEncoding::ArrayEncoding encoding, std::string_view key);

/// The text that a boolean is sent as.
std::string_view encode(URLEncoding::BoolEncoding encoding, bool value);

/// The text with every byte escaped but letters, digits and "-._~/?", which is what a query may
/// hold besides the delimiters of its items.
std::string queryEscaped(std::string_view text);

}  // namespace quenwick
