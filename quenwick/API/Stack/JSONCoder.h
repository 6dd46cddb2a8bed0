#pragma once

#include <string>
#include <string_view>

#include "quenwick/API/Stack/Coding.h"
#include "quenwick/platform/JSONSerialization.h"

namespace quenwick {

struct JSONDecoder {
  /// Throws `platform::JSONError` for a text that is not JSON, `DecodingError` for JSON of another
  /// shape. A type that reads nothing decodes from any bytes.
  template <Decodable T>
  static T decode(std::string_view text) {
    if constexpr (requires { Coding<T>::withoutReading(); }) {
      return Coding<T>::withoutReading();
    } else {
      return Coding<T>::decode(platform::JSONSerialization::parse(text), CodingPath());
    }
  }
};

struct JSONEncoder {
  /// Throws `platform::JSONError` for what JSON cannot hold.
  template <Encodable T>
  static std::string encode(const T& value) {
    return platform::JSONSerialization::text(Coding<T>::encode(value));
  }
};

}  // namespace quenwick
