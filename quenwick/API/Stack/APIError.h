#pragma once

#include <optional>
#include <source_location>
#include <string>
#include <string_view>
#include <variant>

#include "quenwick/API/Stack/URLConvertible.h"
#include "quenwick/platform/Error.h"
#include "quenwick/platform/URLRequest.h"

namespace quenwick {

/// Every failure of the request stack. The errors that it wraps are kept as they were thrown.
class APIError : public platform::Error {
 public:
  /// What the service or the network failed with.
  struct GeneralFailureReason {
    /// The error that the body was decoded into.
    struct Captured {
      platform::ErrorPointer error;
      int statusCode = 0;
    };
    /// A body that could not be decoded, or that nobody asked to decode.
    struct Uncaptured {
      platform::Bytes body;
      int statusCode = 0;
    };
    struct Network {};

    std::variant<Captured, Uncaptured, Network> kind;
    std::string localizedDescription() const;
  };

  struct ParameterEncodingFailureReason {
    struct JSONEncodingFailed {
      platform::ErrorPointer error;
    };
    struct CustomEncodingFailed {
      platform::ErrorPointer error;
    };
    struct MissingURL {};
    struct Unknown {};

    std::variant<JSONEncodingFailed, CustomEncodingFailed, MissingURL, Unknown> kind;
    std::string localizedDescription() const;
  };

  struct URLRequestValidationFailureReason {
    struct BodyDataInGETRequest {
      platform::Bytes body;
    };

    std::variant<BodyDataInGETRequest> kind;
    std::string localizedDescription() const;
  };

  struct GeneralFailure {
    GeneralFailureReason reason;
  };
  struct ParameterEncodingFailed {
    ParameterEncodingFailureReason reason;
  };
  struct InvalidURL {
    URLConvertible url;
  };
  struct URLRequestValidationFailed {
    URLRequestValidationFailureReason reason;
  };
  struct CreateURLRequestFailed {
    platform::ErrorPointer error;
  };
  struct SessionTaskFailed {
    platform::ErrorPointer error;
  };
  struct DecodeFailed {
    platform::ErrorPointer error;
  };
  struct Unknown {};

  using Kind =
      std::variant<GeneralFailure, ParameterEncodingFailed, InvalidURL, URLRequestValidationFailed,
                   CreateURLRequestFailed, SessionTaskFailed, DecodeFailed, Unknown>;

  /// `APIError(APIError::InvalidURL{url})`, and so for each kind.
  explicit APIError(Kind kind);

  const Kind& kind() const { return kind_; }

  /// The fixed text of the kind with what it carries; the same as the localized description.
  const std::string& errorDescription() const { return localizedDescription(); }

  /// The wrapped error, also one that the reason carries, or null.
  platform::ErrorPointer underlyingError() const;

  /// What gave no URL, where that is the failure.
  std::optional<URLConvertible> urlConvertible() const;

 private:
  Kind kind_;
};

/// The error itself where it is an `APIError`, else null. Lives as long as `error` does.
const APIError* asAPIError(const platform::Error& error);

/// The error itself where it is an `APIError`, else the fallback.
APIError asAPIError(const platform::Error& error, const APIError& fallback);

/// The error itself, where anything but an `APIError` is a programming fault: it stops the
/// process with the message and the place of the call.
const APIError& asAPIErrorOrFail(const platform::Error& error, std::string_view message,
                                 std::source_location place = std::source_location::current());

}  // namespace quenwick
