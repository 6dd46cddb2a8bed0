#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <utility>

#include "quenwick/API/Stack/APIError.h"
#include "quenwick/platform/Error.h"
#include "quenwick/platform/URLRequest.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

/// An error that the body of a response is decoded into. `decode` throws a `platform::Error`
/// where the body is of another shape.
template <class E>
concept DecodableError =
    std::derived_from<E, platform::Error> && requires(const platform::Value& body) {
      { E::decode(body) } -> std::same_as<E>;
    };

/// Turns a response into the error to throw for it.
class ConvertToError {
 public:
  /// Decodes the body, read as JSON, into an `E`, whatever the status: `Captured` with it, or
  /// `Uncaptured` with the body where it does not decode.
  template <DecodableError E>
  static ConvertToError decoding() {
    return decodingWith([](const platform::Value& body) -> platform::ErrorPointer {
      return std::make_shared<const E>(E::decode(body));
    });
  }

  /// Takes any response for a failure of the network; the body is not looked at.
  static ConvertToError networkError();

  APIError operator()(const platform::Bytes& body, int statusCode) const {
    return convert_(body, statusCode);
  }

 private:
  using Conversion = std::function<APIError(const platform::Bytes& body, int statusCode)>;
  using Decoder = platform::ErrorPointer (*)(const platform::Value& body);

  explicit ConvertToError(Conversion convert) : convert_(std::move(convert)) {}
  static ConvertToError decodingWith(Decoder decode);

  Conversion convert_;
};

}  // namespace quenwick
