#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "quenwick/API/Stack/Request.h"

namespace quenwick {

/// A request held in memory. Carries the default headers from the start, which win over those of
/// the same names that it is given.
class BaseRequest : public Request {
 public:
  /// The parameters are to be sent as JSON until `setEncodeType` says otherwise.
  BaseRequest(HTTPMethod method, std::string path,
              std::optional<platform::Dictionary> parameters = std::nullopt,
              const std::map<std::string, std::string>& headers = {});

  EncodingType encodeType() const override { return encodeType_; }
  void setEncodeType(EncodingType type) override { encodeType_ = type; }
  const std::string& path() const override { return path_; }
  const HTTPMethod& method() const override { return method_; }
  const std::optional<platform::Dictionary>& parameters() const override { return parameters_; }
  void setParameters(std::optional<platform::Dictionary> parameters) override {
    parameters_ = std::move(parameters);
  }
  const HTTPHeaders& headers() const override { return headers_; }
  void setHeaders(HTTPHeaders headers) override { headers_ = std::move(headers); }
  const std::map<int, ConvertToError>& exception() const override { return exception_; }

  /// Sets each of the parameters, over one of the same key; a request without any gains them.
  void addParameters(const platform::Dictionary& parameters);

  /// Sets Authorization to "Bearer " and the token.
  void addAuthorization(std::string_view token);

  /// Sets Authorization to "Basic " and the token, which is encoded already.
  void addBasicAuthorization(std::string_view token);

  /// Decodes responses of that status into an `E`. Of two handlers for a status the later holds.
  template <DecodableError E>
  void addExceptionHandler(int statusCode) {
    exception_.insert_or_assign(statusCode, ConvertToError::decoding<E>());
  }

  /// Takes responses of that status for a failure of the network.
  void addNetworkErrorExceptionHandler(int statusCode);

 private:
  EncodingType encodeType_ = EncodingType::json;
  std::string path_;
  HTTPMethod method_;
  std::optional<platform::Dictionary> parameters_;
  HTTPHeaders headers_;
  std::map<int, ConvertToError> exception_;
};

}  // namespace quenwick
