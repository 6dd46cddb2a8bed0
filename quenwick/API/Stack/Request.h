#pragma once

#include <map>
#include <optional>
#include <string>

#include "quenwick/API/Stack/ConvertToError.h"
#include "quenwick/API/Stack/EncodingType.h"
#include "quenwick/API/Stack/HTTPHeaders.h"
#include "quenwick/API/Stack/HTTPMethod.h"
#include "quenwick/API/Stack/ParameterEncoding.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

/// The description of one call of the service's API.
class Request {
 public:
  virtual ~Request() = default;

  virtual EncodingType encodeType() const = 0;
  virtual void setEncodeType(EncodingType type) = 0;

  /// Follows the base URL directly, and so begins with "/" or is empty.
  virtual const std::string& path() const = 0;
  virtual const HTTPMethod& method() const = 0;

  virtual const std::optional<platform::Dictionary>& parameters() const = 0;
  virtual void setParameters(std::optional<platform::Dictionary> parameters) = 0;

  virtual const HTTPHeaders& headers() const = 0;
  virtual void setHeaders(HTTPHeaders headers) = 0;

  /// By HTTP status, what turns a response of that status into an error.
  virtual const std::map<int, ConvertToError>& exception() const = 0;

  /// The encoding that `encodeType` stands for.
  ParameterEncoding parameterEncoding() const { return quenwick::parameterEncoding(encodeType()); }
};

}  // namespace quenwick
