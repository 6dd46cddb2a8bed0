#pragma once

#include <string>
#include <string_view>
#include <variant>

#include "quenwick/API/Stack/EncodingType.h"
#include "quenwick/API/Stack/HTTPMethod.h"
#include "quenwick/platform/JSONSerialization.h"

namespace quenwick {

/// Parameters written as the items of a query.
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

  friend bool operator==(const URLEncoding&, const URLEncoding&) = default;
};

inline constexpr URLEncoding URLEncoding::defaultEncoding{};
inline constexpr URLEncoding URLEncoding::queryString{.destination = Destination::queryString};
inline constexpr URLEncoding URLEncoding::httpBody{.destination = Destination::httpBody};

/// Whether the parameters of a request of that method go into its URL; GET, HEAD and DELETE are
/// the methods that have them there.
inline bool encodesParametersInURL(URLEncoding::Destination destination, const HTTPMethod& method) {
  switch (destination) {
    case URLEncoding::Destination::methodDependent:
      break;
    case URLEncoding::Destination::queryString:
      return true;
    case URLEncoding::Destination::httpBody:
      return false;
  }
  return method == HTTPMethod::get || method == HTTPMethod::head || method == HTTPMethod::delete_;
}

/// The key that an element of the array under `key` is sent under.
inline std::string encode(URLEncoding::ArrayEncoding encoding, std::string_view key) {
  std::string text(key);
  if (encoding == URLEncoding::ArrayEncoding::brackets) text += "[]";
  return text;
}

/// The text that a boolean is sent as.
constexpr std::string_view encode(URLEncoding::BoolEncoding encoding, bool value) {
  if (encoding == URLEncoding::BoolEncoding::literal) return value ? "true" : "false";
  return value ? "1" : "0";
}

/// Parameters written as one JSON text in the body.
struct JSONEncoding {
  platform::JSONWritingOptions options = platform::JSONWritingOptions::compact;

  static const JSONEncoding defaultEncoding;
  static const JSONEncoding prettyPrinted;

  friend bool operator==(const JSONEncoding&, const JSONEncoding&) = default;
};

inline constexpr JSONEncoding JSONEncoding::defaultEncoding{};
inline constexpr JSONEncoding JSONEncoding::prettyPrinted{
    platform::JSONWritingOptions::prettyPrinted};

using ParameterEncoding = std::variant<URLEncoding, JSONEncoding>;

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
