#include "quenwick/API/Requesters/BehavioralVerificationRequester.h"

#include <utility>

#include "quenwick/API/Requesters/BehavioralVerificationRequestType.h"
#include "quenwick/API/Stack/APIKeyError.h"
#include "quenwick/API/Stack/DataContainer.h"
#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/platform/KeysThread.h"
#include "quenwick/state/Analytics.h"

namespace quenwick {
namespace {

using Answer = DataContainer<BehavioralVerificationContainer>;
using Datapoints = BehavioralVerificationRequester::Datapoints;

/// What the service asks for. A missing bundle identifier is reported as a missing key.
platform::Dictionary parametersFrom(const Datapoints& datapoints) {
  auto key = AuthenticationKeychain::behaviorVerificationAPIToken();
  if (!key) throw APIKeyError::missing();
  auto known = datapoints();
  auto bundle = known.find("bundle_identifier");
  if (bundle == known.end()) throw APIKeyError::missing();
  return {{"bundle_identifier", bundle->second}, {"api_key", *std::move(key)}};
}

platform::Task<BehavioralVerificationContainer> run(BehavioralVerificationRequester requester,
                                                    Datapoints datapoints, std::stop_token stop) {
  auto request = quenwick::request(BehavioralVerificationRequestType::verify);
  auto read = [datapoints] { return parametersFrom(datapoints); };
  request.setParameters(co_await platform::onKeysThread(read));
  auto answer = co_await requester.requestAPI<Answer>(request, stop);
  co_return std::move(answer.value);
}

}  // namespace

BehavioralVerificationRequester::BehavioralVerificationRequester(
    std::shared_ptr<APISessionManager> manager, platform::URL baseURL, Datapoints datapoints)
    : Requester(std::move(manager), std::move(baseURL)),
      datapoints_(datapoints ? std::move(datapoints)
                             : [] { return Analytics::shared().datapoints(); }) {}

platform::Task<BehavioralVerificationContainer> BehavioralVerificationRequester::verify(
    std::stop_token stop) const {
  return run(*this, datapoints_, std::move(stop));
}

}  // namespace quenwick
