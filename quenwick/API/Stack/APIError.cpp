#include "quenwick/API/Stack/APIError.h"

#include <utility>

#include "quenwick/platform/FatalError.h"
#include "quenwick/platform/Text.h"

namespace quenwick {
namespace {

using platform::ErrorPointer;
using General = APIError::GeneralFailureReason;
using Encoding = APIError::ParameterEncodingFailureReason;
using Validation = APIError::URLRequestValidationFailureReason;

constexpr const char* kUnknown = "Unknown error occurred";

/// One function for each alternative of a variant.
template <class... Function>
struct Overloaded : Function... {
  using Function::operator()...;
};

std::string textOf(const ErrorPointer& error) {
  return error ? error->localizedDescription() : kUnknown;
}

std::string textOf(const platform::Bytes& body) {
  return platform::isUTF8(body) ? body : std::to_string(body.size()) + " bytes";
}

std::string textOf(const APIError::Kind& kind) {
  return std::visit(
      Overloaded{
          [](const APIError::GeneralFailure& e) { return e.reason.localizedDescription(); },
          [](const APIError::ParameterEncodingFailed& e) {
            return e.reason.localizedDescription();
          },
          [](const APIError::InvalidURL& e) { return "URL is not valid: " + e.url.description(); },
          [](const APIError::URLRequestValidationFailed& e) {
            return "URLRequest validation failed due to reason: " + e.reason.localizedDescription();
          },
          [](const APIError::CreateURLRequestFailed& e) {
            return "URLRequest creation failed with error: " + textOf(e.error);
          },
          [](const APIError::SessionTaskFailed& e) {
            return "URLSessionTask failed with error: " + textOf(e.error);
          },
          [](const APIError::DecodeFailed& e) { return textOf(e.error); },
          [](const APIError::Unknown&) { return std::string(kUnknown); },
      },
      kind);
}

/// The error that an alternative carries, itself or in its reason.
template <class Alternative>
ErrorPointer carriedError(const Alternative& alternative) {
  if constexpr (requires { alternative.error; }) {
    return alternative.error;
  } else if constexpr (requires { alternative.reason; }) {
    return std::visit([](const auto& reason) { return carriedError(reason); },
                      alternative.reason.kind);
  } else {
    return nullptr;
  }
}

}  // namespace

std::string General::localizedDescription() const {
  return std::visit(
      Overloaded{
          [](const Captured& r) { return std::to_string(r.statusCode) + " - " + textOf(r.error); },
          [](const Uncaptured& r) { return std::to_string(r.statusCode) + "\n" + textOf(r.body); },
          [](const Network&) {
            return std::string("There was a network connection error. Please try again later.");
          },
      },
      kind);
}

std::string Encoding::localizedDescription() const {
  return std::visit(
      Overloaded{
          [](const JSONEncodingFailed& r) {
            return "JSON could not be encoded because of error:\n" + textOf(r.error);
          },
          [](const CustomEncodingFailed& r) {
            return "Custom parameter encoder failed with error: " + textOf(r.error);
          },
          [](const MissingURL&) { return std::string("URL request to encode was missing a URL"); },
          [](const Unknown&) { return std::string("Some unknown error occurred"); },
      },
      kind);
}

std::string Validation::localizedDescription() const {
  return "Invalid URLRequest: Requests with GET method cannot have body data:\n" +
         textOf(std::get<BodyDataInGETRequest>(kind).body);
}

APIError::APIError(Kind kind) : Error(textOf(kind)), kind_(std::move(kind)) {}

ErrorPointer APIError::underlyingError() const {
  return std::visit([](const auto& alternative) { return carriedError(alternative); }, kind_);
}

std::optional<URLConvertible> APIError::urlConvertible() const {
  const auto* invalid = std::get_if<InvalidURL>(&kind_);
  return invalid ? std::optional(invalid->url) : std::nullopt;
}

const APIError* asAPIError(const platform::Error& error) {
  return dynamic_cast<const APIError*>(&error);
}

APIError asAPIError(const platform::Error& error, const APIError& fallback) {
  const auto* own = asAPIError(error);
  return own ? *own : fallback;
}

const APIError& asAPIErrorOrFail(const platform::Error& error, std::string_view message,
                                 std::source_location place) {
  const auto* own = asAPIError(error);
  if (own) return *own;
  platform::fatalError(std::string(message) + ", " + place.file_name() + ":" +
                       std::to_string(place.line()));
}

}  // namespace quenwick
