#include "quenwick/API/Stack/JSONEncoding.h"

#include <memory>
#include <utility>

#include "quenwick/API/Stack/APIError.h"

namespace quenwick {
namespace {

constexpr auto kContentType = "Content-Type";
constexpr auto kJSONType = "application/json";

template <class JSON>
platform::URLRequest withBody(platform::URLRequest request, const std::optional<JSON>& json,
                              platform::JSONWritingOptions options) {
  if (!json) return request;
  try {
    request.httpBody = platform::JSONSerialization::text(*json, options);
  } catch (const platform::JSONError& error) {
    throw APIError(APIError::ParameterEncodingFailed{
        {APIError::ParameterEncodingFailureReason::JSONEncodingFailed{
            std::make_shared<platform::JSONError>(error)}}});
  }
  if (!platform::headerField(request.headerFields, kContentType)) {
    request.headerFields.emplace_back(kContentType, kJSONType);
  }
  return request;
}

}  // namespace

platform::URLRequest JSONEncoding::encode(
    platform::URLRequest request, const std::optional<platform::Dictionary>& parameters) const {
  return withBody(std::move(request), parameters, options);
}

platform::URLRequest JSONEncoding::encodeWithArray(
    platform::URLRequest request, const std::optional<platform::List>& array) const {
  return withBody(std::move(request), array, options);
}

platform::URLRequest JSONEncoding::encodeWithJSONObject(
    platform::URLRequest request, const std::optional<platform::Value>& object) const {
  return withBody(std::move(request), object, options);
}

}  // namespace quenwick
