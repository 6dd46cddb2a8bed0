#include "quenwick/events/EventOutcome.h"

#include <string>
#include <variant>
#include <vector>

#include "quenwick/API/Stack/APIError.h"
#include "quenwick/API/Stack/APIKeyError.h"
#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/AuthenticationTokenManager.h"
#include "quenwick/auth/SecureSessionData.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/Redaction.h"
#include "quenwick/platform/SecItem.h"
#include "quenwick/platform/Text.h"

namespace quenwick {
namespace {

constexpr auto kCategory = QWLogType::behaviorEvent;

EventState stateAfter(const APIError& error) {
  const auto& kind = error.kind();
  if (std::holds_alternative<APIError::GeneralFailure>(kind)) return EventState::failedStatus;
  if (std::holds_alternative<APIError::SessionTaskFailed>(kind)) return EventState::failedTransport;
  if (std::holds_alternative<APIError::DecodeFailed>(kind)) return EventState::failedAnswer;
  return EventState::failedOther;
}

/// A shorter part of the credential would take words with it that only look like it.
constexpr std::size_t kShortestPart = 4;

/// What no line may show of the credential, should the answer repeat it.
void addParts(std::vector<std::string>& all, const std::string& credential) {
  auto plain = platform::base64Decoded(credential);
  auto colon = plain.find(':');
  all.insert(all.end(), {credential, plain});
  for (auto part : {plain.substr(0, colon), plain.substr(colon + 1)}) {
    if (part.size() >= kShortestPart) all.push_back(std::move(part));
  }
}

/// Another credential may have taken the place of the one that was sent.
std::string reasonOf(const platform::Error& error, const std::string& credential) {
  std::vector<std::string> secrets;
  for (const auto& each : {credential, currentCredential()}) addParts(secrets, each);
  return platform::redacted(error.localizedDescription(), secrets, platform::kLongestReason);
}

}  // namespace

EventState stateAfter(const platform::Error* error) {
  using TokenError = AuthenticationTokenManager::TokenError;
  if (!error) return EventState::acknowledged;
  if (const auto* known = asAPIError(*error)) return stateAfter(*known);
  if (dynamic_cast<const APIKeyError*>(error)) return EventState::failedNoCredential;
  if (dynamic_cast<const TokenError*>(error)) return EventState::failedUnauthorized;
  return EventState::failedOther;
}

std::string currentCredential() {
  if (!platform::SecItemsAreInMemory()) return {};  // which nobody waits for here
  auto key = rawValue(SecureSessionData::behaviorAPIToken);
  return AuthenticationKeychain::standard().string(key).value_or("");
}

void tellEvent(const platform::Dictionary& payload, const platform::Error* error,
               const std::string& credential) {
  if (!error) {
    const auto* event = payload.find("event");
    const auto* name = event ? event->as<std::string>() : nullptr;
    return Logger::log(kCategory, "Event: " + (name ? *name : "") + " Status: Success");
  }
  Logger::log(kCategory, "Could not log event " + platform::JSONSerialization::text(payload) + ":");
  Logger::error(kCategory, reasonOf(*error, credential));
}

void tellIdentification(const platform::Error* error, const std::string& credential) {
  if (!error) return;
  Logger::log(kCategory, "Could not identify user:");
  Logger::error(kCategory, reasonOf(*error, credential));
}

}  // namespace quenwick
