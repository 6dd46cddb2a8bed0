#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "quenwick/API/Requesters/BehavioralVerificationRequestable.h"
#include "quenwick/API/Stack/Requester.h"

namespace quenwick {

/// Performs the handshake with the service, for the API key in the keychain and the application's
/// bundle identifier.
class BehavioralVerificationRequester : public Requester, public BehavioralVerificationRequestable {
 public:
  using Datapoints = std::function<std::map<std::string, std::string>()>;

  /// `datapoints` tells the facts of the install, by default those of `Analytics::shared`.
  BehavioralVerificationRequester(std::shared_ptr<APISessionManager> manager, platform::URL baseURL,
                                  Datapoints datapoints = nullptr);

  /// Throws `APIKeyError`, and sends nothing, where there is no API key or no bundle identifier;
  /// else what `requestAPI` throws.
  platform::Task<BehavioralVerificationContainer> verify(std::stop_token stop = {}) const override;

 private:
  Datapoints datapoints_;
};

}  // namespace quenwick
