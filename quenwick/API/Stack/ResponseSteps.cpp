#include "quenwick/API/Stack/ResponseSteps.h"

#include <utility>

#include "quenwick/auth/AuthenticationTokenManager.h"

namespace quenwick {
namespace {

constexpr int kUnauthorized = 401;

bool isSuccess(int status) { return static_cast<unsigned>(status) - 200U < 100U; }

}  // namespace

platform::Bytes validatedBody(platform::DataResponse answer,
                              const std::map<int, ConvertToError>& handlers) {
  using TokenError = AuthenticationTokenManager::TokenError;
  const auto* http = dynamic_cast<const platform::HTTPURLResponse*>(answer.response.get());
  if (!http) throw APIError(APIError::Unknown{});
  int status = http->statusCode;
  if (status == kUnauthorized) throw TokenError(TokenError::Code::missingToken);
  if (auto handler = handlers.find(status); handler != handlers.end()) {
    throw handler->second(answer.data, status);
  }
  if (!isSuccess(status)) {
    throw APIError(APIError::GeneralFailure{
        {APIError::GeneralFailureReason::Uncaptured{std::move(answer.data), status}}});
  }
  return std::move(answer.data);
}

}  // namespace quenwick
