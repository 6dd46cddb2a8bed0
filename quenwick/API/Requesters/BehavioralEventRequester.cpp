#include "quenwick/API/Requesters/BehavioralEventRequester.h"

#include <optional>
#include <string>
#include <utility>

#include "quenwick/API/Requesters/BehavioralEventRequestType.h"
#include "quenwick/API/Stack/APIKeyError.h"
#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/SecureSessionData.h"
#include "quenwick/platform/KeysThread.h"
#include "quenwick/platform/SecItem.h"

namespace quenwick {
namespace {

using platform::Dictionary;
using platform::Task;
/// How a payload becomes the parameters of its request.
using Complete = Dictionary (BehavioralEventRequestable::*)(Dictionary) const;

std::optional<std::string> storedCredential() {
  return AuthenticationKeychain::standard().string(rawValue(SecureSessionData::behaviorAPIToken));
}

/// Reads where that takes no time; elsewhere a slow keyring would keep a thread of the pool.
Task<std::string> credential() {
  auto stored = platform::SecItemsAreInMemory() ? storedCredential()
                                                : co_await platform::onKeysThread(storedCredential);
  if (!stored) throw APIKeyError::missing();
  co_return *std::move(stored);
}

Task<BehavioralEventContainer> post(BehavioralEventRequester requester, Complete complete,
                                    Dictionary payload) {
  auto token = co_await credential();
  auto request = quenwick::request(BehavioralEventRequestType::sendEvent);
  request.addBasicAuthorization(token);
  request.setParameters((requester.*complete)(std::move(payload)));
  co_return co_await requester.requestAPI<BehavioralEventContainer>(request);
}

}  // namespace

BehavioralEventRequester::BehavioralEventRequester(std::shared_ptr<APISessionManager> manager,
                                                   platform::URL baseURL)
    : BehavioralEventRequester(std::move(manager), std::move(baseURL),
                               wholeSeconds(platform::Clock::system())) {}

BehavioralEventRequester::BehavioralEventRequester(std::shared_ptr<APISessionManager> manager,
                                                   platform::URL baseURL,
                                                   TimestampGenerator timestampGenerator)
    : Requester(std::move(manager), std::move(baseURL)),
      timestampGenerator_(std::move(timestampGenerator)) {}

BehavioralEventRequestable::TimestampGenerator BehavioralEventRequester::wholeSeconds(
    std::shared_ptr<const platform::Clock> clock) {
  return [clock = std::move(clock)] {
    return static_cast<std::int64_t>(platform::secondsSince1970(clock->now())) * 1000;
  };
}

Task<BehavioralEventContainer> BehavioralEventRequester::sendEvent(Dictionary payload) const {
  return post(*this, &BehavioralEventRequestable::makeEventParameters, std::move(payload));
}

Task<BehavioralEventContainer> BehavioralEventRequester::identifyUser(Dictionary payload) const {
  return post(*this, &BehavioralEventRequestable::mergingTimestamp, std::move(payload));
}

}  // namespace quenwick
