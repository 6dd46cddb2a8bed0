#include "quenwick/API/Stack/RequestConvertible.h"

#include <memory>

#include "quenwick/API/Stack/APIError.h"
#include "quenwick/API/Stack/RequestExtensions.h"

namespace quenwick {
namespace {

platform::URLRequest bareRequest(const URLConvertible& url, const HTTPMethod& method,
                                 const std::optional<HTTPHeaders>& headers) {
  platform::URLRequest request{.url = url.asURL(), .httpMethod = method.rawValue};
  if (headers) setHeaders(request, *headers);
  return request;
}

[[noreturn]] void failOverShape() {
  using Reason = APIError::ParameterEncodingFailureReason;
  auto error =
      std::make_shared<platform::OtherError>("the encoding takes no parameters like these");
  throw APIError(APIError::ParameterEncodingFailed{{Reason::CustomEncodingFailed{error}}});
}

}  // namespace

platform::URLRequest RequestConvertible::asURLRequest() const {
  auto request = bareRequest(fields_.url, fields_.method, fields_.headers);
  if (!fields_.parameters) return request;
  if (const auto* map = fields_.parameters->as<platform::Dictionary>()) {
    return encode(fields_.encoding, std::move(request), *map);
  }
  const auto* list = fields_.parameters->as<platform::List>();
  const auto* json = std::get_if<JSONEncoding>(&fields_.encoding);
  if (!list || !json) failOverShape();
  return json->encodeWithArray(std::move(request), *list);
}

platform::URLRequest ParameterlessRequestConvertible::asURLRequest() const {
  return bareRequest(url_, method_, headers_);
}

}  // namespace quenwick
