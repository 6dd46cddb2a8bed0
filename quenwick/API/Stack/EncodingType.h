#pragma once

#include <initializer_list>
#include <optional>
#include <string_view>

namespace quenwick {

/// How the parameters of a request are put on the wire.
enum class EncodingType {
  json,           ///< in the body, as compact JSON
  urlEncoding,    ///< in the URL's query, arrays as "key[]"
  httpBody,       ///< in the body, written as a query is
  arrayEncoding,  ///< in query or body as the method has it, arrays as the bare key
};

/// "json", "urlEncoding", "httpBody" or "arrayEncoding".
constexpr std::string_view rawValue(EncodingType type) {
  switch (type) {
    case EncodingType::json:
      return "json";
    case EncodingType::urlEncoding:
      return "urlEncoding";
    case EncodingType::httpBody:
      return "httpBody";
    case EncodingType::arrayEncoding:
      return "arrayEncoding";
  }
  return {};
}

/// The type of that raw value, to the letter; none where there is no such type.
constexpr std::optional<EncodingType> parseEncodingType(std::string_view text) {
  for (auto type : {EncodingType::json, EncodingType::urlEncoding, EncodingType::httpBody,
                    EncodingType::arrayEncoding}) {
    if (rawValue(type) == text) return type;
  }
  return std::nullopt;
}

}  // namespace quenwick
