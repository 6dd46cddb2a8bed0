#include "quenwick/API/Stack/BaseRequest.h"

namespace quenwick {

BaseRequest::BaseRequest(HTTPMethod method, std::string path,
                         std::optional<platform::Dictionary> parameters,
                         const std::map<std::string, std::string>& headers)
    : path_(std::move(path)),
      method_(std::move(method)),
      parameters_(std::move(parameters)),
      headers_(headers) {
  for (const auto& header : HTTPHeaders::defaultHeaders()) headers_.update(header);
}

void BaseRequest::addParameters(const platform::Dictionary& parameters) {
  if (!parameters_) parameters_.emplace();
  for (const auto& [key, value] : parameters) parameters_->set(key, value);
}

void BaseRequest::addAuthorization(std::string_view token) {
  headers_.update(HTTPHeader::bearerAuthorization(token));
}

void BaseRequest::addBasicAuthorization(std::string_view token) {
  headers_.update(HTTPHeader::authorization("Basic " + std::string(token)));
}

void BaseRequest::addNetworkErrorExceptionHandler(int statusCode) {
  exception_.insert_or_assign(statusCode, ConvertToError::networkError());
}

}  // namespace quenwick
