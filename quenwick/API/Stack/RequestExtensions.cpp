#include "quenwick/API/Stack/RequestExtensions.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "quenwick/API/Stack/APIError.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/Text.h"
#include "quenwick/platform/URLSession.h"

namespace quenwick {
namespace {

using namespace std::string_view_literals;

bool isTokenCharacter(char c) {
  bool isAlphanumeric = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  return isAlphanumeric || "!#$%&'*+-.^_`|~"sv.find(c) != std::string_view::npos;
}

bool endsField(char c) { return c == '\r' || c == '\n' || c == '\0'; }

bool isSendable(const HTTPHeader& header) {
  return !header.name.empty() && std::ranges::all_of(header.name, isTokenCharacter) &&
         std::ranges::none_of(header.value, endsField);
}

HTTPHeaders headersFrom(const platform::HeaderFields& fields) {
  HTTPHeaders headers;
  for (const auto& [name, value] : fields) {
    auto earlier = headers.value(name);
    headers.update(name, earlier ? *earlier + ", " + value : value);
  }
  return headers;
}

platform::HeaderFields fieldsFrom(const HTTPHeaders& headers) {
  platform::HeaderFields fields;
  fields.reserve(headers.size() + 1);
  for (const auto& header : headers) {
    if (isSendable(header)) {
      fields.emplace_back(header.name, header.value);
    } else {
      // The value stays out of the log: it may be a credential.
      Logger::error(QWLogType::behaviorEvent, "Leaving out a header that cannot be sent: " +
                                                  platform::debugQuoted(header.name));
    }
  }
  return fields;
}

}  // namespace

std::optional<HTTPMethod> method(const platform::URLRequest& request) {
  if (!request.httpMethod) return std::nullopt;
  return HTTPMethod{*request.httpMethod};
}

void setMethod(platform::URLRequest& request, std::optional<HTTPMethod> method) {
  request.httpMethod.reset();
  if (method) request.httpMethod = std::move(method->rawValue);
}

HTTPHeaders headers(const platform::URLRequest& request) {
  return headersFrom(request.headerFields);
}

HTTPHeaders headers(const platform::HTTPURLResponse& response) {
  return headersFrom(response.headerFields);
}

HTTPHeaders headers(const platform::URLSessionConfiguration& configuration) {
  return headersFrom(configuration.additionalHeaders);
}

void setHeaders(platform::URLRequest& request, const HTTPHeaders& headers) {
  request.headerFields = fieldsFrom(headers);
}

void setHeaders(platform::URLSessionConfiguration& configuration, const HTTPHeaders& headers) {
  configuration.additionalHeaders = fieldsFrom(headers);
}

void validate(const platform::URLRequest& request) {
  using Reason = APIError::URLRequestValidationFailureReason;
  if (request.httpMethod != HTTPMethod::get.rawValue || !request.httpBody) return;
  throw APIError(
      APIError::URLRequestValidationFailed{{Reason::BodyDataInGETRequest{*request.httpBody}}});
}

}  // namespace quenwick
