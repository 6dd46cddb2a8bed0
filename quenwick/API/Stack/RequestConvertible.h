#pragma once

#include <optional>
#include <utility>

#include "quenwick/API/Stack/HTTPHeaders.h"
#include "quenwick/API/Stack/HTTPMethod.h"
#include "quenwick/API/Stack/ParameterEncoding.h"
#include "quenwick/API/Stack/URLConvertible.h"
#include "quenwick/API/Stack/URLRequestConvertible.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

/// A request built from its parts, with parameters.
class RequestConvertible : public URLRequestConvertible {
 public:
  struct Fields {
    URLConvertible url;
    HTTPMethod method;
    /// A dictionary, or with a JSON encoding also a list.
    std::optional<platform::Value> parameters = std::nullopt;
    ParameterEncoding encoding = JSONEncoding::defaultEncoding;
    std::optional<HTTPHeaders> headers = std::nullopt;
  };

  explicit RequestConvertible(Fields fields) : fields_(std::move(fields)) {}
  const Fields& fields() const { return fields_; }

  /// Throws `APIError`: `InvalidURL`, what the encoding throws, or `CustomEncodingFailed` for
  /// parameters of another shape.
  platform::URLRequest asURLRequest() const override;

 private:
  Fields fields_;
};

/// What a `RequestConvertible` of these parts builds, without a copy of them.
platform::URLRequest urlRequest(platform::URL url, const HTTPMethod& method,
                                const HTTPHeaders& headers,
                                const std::optional<platform::Dictionary>& parameters,
                                const ParameterEncoding& encoding);

/// A request built from its parts, without parameters.
class ParameterlessRequestConvertible : public URLRequestConvertible {
 public:
  ParameterlessRequestConvertible(URLConvertible url, HTTPMethod method,
                                  std::optional<HTTPHeaders> headers = std::nullopt)
      : url_(std::move(url)), method_(std::move(method)), headers_(std::move(headers)) {}

  const URLConvertible& url() const { return url_; }
  const HTTPMethod& method() const { return method_; }
  const std::optional<HTTPHeaders>& headers() const { return headers_; }

  /// Throws `APIError` (`InvalidURL`).
  platform::URLRequest asURLRequest() const override;

 private:
  URLConvertible url_;
  HTTPMethod method_;
  std::optional<HTTPHeaders> headers_;
};

}  // namespace quenwick
