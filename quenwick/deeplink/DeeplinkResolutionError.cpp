#include "quenwick/deeplink/DeeplinkResolutionError.h"

#include <utility>

namespace quenwick {
namespace {

constexpr auto kDomain = "com.quenwick.error";
constexpr int kFailureCode = -1;
constexpr int kUnknownCode = -2;

const std::string& reason(const DeeplinkResolutionError::Case& value) {
  static const auto& unknown = *new std::string("unknown");
  const auto* failure = std::get_if<DeeplinkResolutionError::Failure>(&value);
  return failure ? failure->message : unknown;
}

}  // namespace

DeeplinkResolutionError::DeeplinkResolutionError(Case value)
    : Error(reason(value)), case_(std::move(value)) {}

DeeplinkResolutionError DeeplinkResolutionError::failure(std::string link, std::string message) {
  return DeeplinkResolutionError(Failure{std::move(link), std::move(message)});
}

DeeplinkResolutionError DeeplinkResolutionError::unknown() {
  return DeeplinkResolutionError(Unknown{});
}

platform::PlatformError DeeplinkResolutionError::nsError() const {
  platform::UserInfo userInfo{
      {std::string(platform::NSLocalizedFailureReasonErrorKey), reason(case_)}};
  const auto* failure = std::get_if<Failure>(&case_);
  if (failure) userInfo.emplace(platform::NSURLErrorKey, failure->link);
  return platform::PlatformError(kDomain, failure ? kFailureCode : kUnknownCode, reason(case_),
                                 std::move(userInfo));
}

platform::PlatformError DeeplinkResolutionError::platformError() const { return nsError(); }

}  // namespace quenwick
