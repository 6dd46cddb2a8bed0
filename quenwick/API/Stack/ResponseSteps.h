#pragma once

#include <exception>
#include <map>

#include "quenwick/API/Stack/APIError.h"
#include "quenwick/API/Stack/ConvertToError.h"
#include "quenwick/API/Stack/JSONCoder.h"
#include "quenwick/platform/URLSession.h"

namespace quenwick {

/// The body of an answer whose status stands for success. Throws `TokenError` for 401, else what
/// the status's handler makes of it, else `APIError` (`Uncaptured`) for one outside of 200 to 299.
platform::Bytes validatedBody(platform::DataResponse answer,
                              const std::map<int, ConvertToError>& handlers);

/// The body decoded; throws `APIError` (`DecodeFailed`).
template <Decodable T>
T decodedBody(const platform::Bytes& body) {
  try {
    return JSONDecoder::decode<T>(body);
  } catch (const std::exception&) {
    throw APIError(APIError::DecodeFailed{platform::errorFrom(std::current_exception())});
  }
}

}  // namespace quenwick
