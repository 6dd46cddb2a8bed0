#include "quenwick/API/Stack/ConvertToError.h"

#include <exception>

#include "quenwick/platform/JSONSerialization.h"

namespace quenwick {

using Reason = APIError::GeneralFailureReason;

ConvertToError ConvertToError::decodingWith(Decoder decode) {
  return ConvertToError([decode](const platform::Bytes& body, int statusCode) {
    try {
      auto error = decode(platform::JSONSerialization::parse(body));
      return APIError(APIError::GeneralFailure{{Reason::Captured{std::move(error), statusCode}}});
    } catch (const std::exception&) {  // a host's own decoder may throw anything
      return APIError(APIError::GeneralFailure{{Reason::Uncaptured{body, statusCode}}});
    }
  });
}

ConvertToError ConvertToError::networkError() {
  return ConvertToError([](const platform::Bytes&, int) {
    return APIError(APIError::GeneralFailure{{Reason::Network{}}});
  });
}

}  // namespace quenwick
