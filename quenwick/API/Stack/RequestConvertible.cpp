#include "quenwick/API/Stack/RequestConvertible.h"

#include <memory>

#include "quenwick/API/Stack/APIError.h"
#include "quenwick/API/Stack/RequestExtensions.h"

namespace quenwick {
namespace {

platform::URLRequest bareRequest(platform::URL url, const HTTPMethod& method,
                                 const HTTPHeaders* headers) {
  platform::URLRequest request{.url = std::move(url), .httpMethod = method.rawValue};
  if (headers) setHeaders(request, *headers);
  return request;
}

const HTTPHeaders* pointerTo(const std::optional<HTTPHeaders>& headers) {
  return headers ? &*headers : nullptr;
}

[[noreturn]] void failOverShape() {
  using Reason = APIError::ParameterEncodingFailureReason;
  auto error =
      std::make_shared<platform::OtherError>("the encoding takes no parameters like these");
  throw APIError(APIError::ParameterEncodingFailed{{Reason::CustomEncodingFailed{error}}});
}

}  // namespace

platform::URLRequest RequestConvertible::asURLRequest() const {
  auto request = bareRequest(fields_.url.asURL(), fields_.method, pointerTo(fields_.headers));
  if (!fields_.parameters) return request;
  if (const auto* map = fields_.parameters->as<platform::Dictionary>()) {
    return encode(fields_.encoding, std::move(request), *map);
  }
  const auto* list = fields_.parameters->as<platform::List>();
  const auto* json = std::get_if<JSONEncoding>(&fields_.encoding);
  if (!list || !json) failOverShape();
  return json->encodeWithArray(std::move(request), *list);
}

platform::URLRequest urlRequest(platform::URL url, const HTTPMethod& method,
                                const HTTPHeaders& headers,
                                const std::optional<platform::Dictionary>& parameters,
                                const ParameterEncoding& encoding) {
  auto request = bareRequest(std::move(url), method, &headers);
  return parameters ? encode(encoding, std::move(request), parameters) : request;
}

platform::URLRequest ParameterlessRequestConvertible::asURLRequest() const {
  return bareRequest(url_.asURL(), method_, pointerTo(headers_));
}

}  // namespace quenwick
