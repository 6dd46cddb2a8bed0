#pragma once

#include <memory>

#include "quenwick/API/Requesters/BehavioralEventRequestable.h"
#include "quenwick/API/Stack/Requester.h"
#include "quenwick/platform/Clock.h"

namespace quenwick {

/// Posts behavioural events to the endpoint that is its base URL, with the credential that the
/// keychain holds at the time of each.
class BehavioralEventRequester : public Requester, public BehavioralEventRequestable {
 public:
  /// Takes the time from the system's clock, as whole seconds: the milliseconds end in 000.
  BehavioralEventRequester(std::shared_ptr<APISessionManager> manager, platform::URL baseURL);
  BehavioralEventRequester(std::shared_ptr<APISessionManager> manager, platform::URL baseURL,
                           TimestampGenerator timestampGenerator);

  /// The generator used by default, over a clock.
  static TimestampGenerator wholeSeconds(std::shared_ptr<const platform::Clock> clock);

  platform::Task<BehavioralEventContainer> sendEvent(platform::Dictionary payload) const override;
  platform::Task<BehavioralEventContainer> identifyUser(
      platform::Dictionary payload) const override;
  const TimestampGenerator& timestampGenerator() const override { return timestampGenerator_; }

 private:
  TimestampGenerator timestampGenerator_;
};

}  // namespace quenwick
