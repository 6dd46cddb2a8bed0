#include "quenwick/API/Repository/BehavioralVerificationRepository.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "quenwick/API/APIService/APIService.h"
#include "quenwick/API/Stack/APIKeyError.h"
#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/SecureSessionData.h"
#include "quenwick/platform/KeysThread.h"
#include "quenwick/platform/Text.h"

namespace quenwick {
namespace {

using Item = SecureSessionData;

constexpr int kCredentialDays = 7;

/// What a handshake leaves in the keychain.
constexpr std::array kHandshake = {Item::behaviorAPIToken, Item::behaviorAPIEndpoint,
                                   Item::behaviorAPITokenExpiresAt};

const Keychain& keychain() { return AuthenticationKeychain::standard(); }

bool hasHandshake() {
  return std::ranges::any_of(kHandshake,
                             [](Item item) { return keychain().data(rawValue(item)).has_value(); });
}

void set(std::string_view text, Item item) { keychain().set(text, rawValue(item)); }

void throwIfStopped(const std::stop_token& stop) {
  if (stop.stop_requested()) throw platform::OtherError("The verification was cancelled");
}

const char* textOf(BehavioralVerificationRepository::Errors::Code code) {
  switch (code) {
    case BehavioralVerificationRepository::Errors::Code::coercingEndpointURLFailed:
      return "The behavioral endpoint is not a URL";
    case BehavioralVerificationRepository::Errors::Code::calculatingExpirationFailed:
      return "The calendar has no date for the end of the credential";
  }
  return "";
}

}  // namespace

BehavioralVerificationRepository::Errors::Errors(Code code) : Error(textOf(code)), code_(code) {}

BehavioralVerificationRepository::BehavioralVerificationRepository()
    : BehavioralVerificationRepository(
          APIService::shared()->behavioralVerification()->requester()) {}

BehavioralVerificationRepository::BehavioralVerificationRepository(
    std::shared_ptr<const BehavioralVerificationRequestable> api,
    std::shared_ptr<const platform::Clock> clock, AddingDays addingDays)
    : api_(std::move(api)), clock_(std::move(clock)), addingDays_(std::move(addingDays)) {}

platform::Task<platform::URL> BehavioralVerificationRepository::verify(
    std::optional<std::string> apiKey, std::stop_token stop) const {
  return run(*this, std::move(apiKey), std::move(stop));
}

platform::Task<platform::URL> BehavioralVerificationRepository::run(
    BehavioralVerificationRepository self, std::optional<std::string> apiKey,
    std::stop_token stop) {
  // Looked at where the keychain is written, so that nothing is once a stop has waited for that.
  auto cached = co_await platform::onKeysThread([self, apiKey, stop] {
    throwIfStopped(stop);
    return self.prepare(apiKey);
  });
  throwIfStopped(stop);
  if (cached) co_return *std::move(cached);
  auto container = co_await self.api_->verify(stop);
  co_await platform::onKeysThread([self, container, stop] {
    throwIfStopped(stop);
    self.store(container);
  });
  throwIfStopped(stop);
  auto url = container.endpointURL();
  if (!url) throw Errors(Errors::Code::coercingEndpointURLFailed);
  co_return *std::move(url);
}

/// Keeps the API key; the endpoint where the last handshake still holds for it. A keychain that is
/// out of reach forgets nothing: neither another key nor its handshake is taken for this one's.
std::optional<platform::URL> BehavioralVerificationRepository::prepare(
    const std::optional<std::string>& apiKey) const {
  auto earlier = AuthenticationKeychain::behaviorVerificationAPIToken();
  invalidateIfNeeded(apiKey);
  bool isOthers = earlier && earlier != apiKey && hasHandshake();
  if (!isOthers) AuthenticationKeychain::setBehaviorVerificationAPIToken(apiKey);
  auto kept = AuthenticationKeychain::behaviorVerificationAPIToken();
  if (kept && kept != apiKey) throw APIKeyError::missing();
  if (kept != apiKey || !isAPITokenValid()) return std::nullopt;
  auto endpoint = keychain().string(rawValue(Item::behaviorAPIEndpoint));
  return endpoint ? platform::URL::parse(*std::move(endpoint)) : std::nullopt;
}

void BehavioralVerificationRepository::invalidateIfNeeded(
    const std::optional<std::string>& apiKey) const {
  auto kept = AuthenticationKeychain::behaviorVerificationAPIToken();
  if (kept && kept != apiKey) invalidateBehaviorEndpointCache();
}

void BehavioralVerificationRepository::invalidateBehaviorEndpointCache() const {
  for (auto item : kHandshake) keychain().removeObject(rawValue(item));
}

bool BehavioralVerificationRepository::isAPITokenValid() const {
  auto end = keychain().doubleValue(rawValue(Item::behaviorAPITokenExpiresAt)).value_or(0);
  return end > platform::secondsSince1970(clock_->now());
}

/// The order matters: a credential without a calendar's end stays.
void BehavioralVerificationRepository::store(
    const BehavioralVerificationContainer& container) const {
  set(platform::base64Encoded(container.identifier + ":" + container.token),
      Item::behaviorAPIToken);
  auto end = addingDays_(kCredentialDays, clock_->now());
  if (!end) throw Errors(Errors::Code::calculatingExpirationFailed);
  keychain().set(platform::secondsSince1970(*end), rawValue(Item::behaviorAPITokenExpiresAt));
  set(container.endpoint, Item::behaviorAPIEndpoint);
}

}  // namespace quenwick
