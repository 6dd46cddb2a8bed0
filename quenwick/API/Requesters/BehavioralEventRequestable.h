#pragma once

#include <cstdint>
#include <functional>

#include "quenwick/API/Models/BehavioralEventContainer.h"
#include "quenwick/platform/Task.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

/// Posts behavioural events. From any thread; the object is not needed after a call.
class BehavioralEventRequestable {
 public:
  /// Milliseconds since 1970.
  using TimestampGenerator = std::function<std::int64_t()>;

  virtual ~BehavioralEventRequestable() = default;

  /// Posts the payload with the common fields laid over it. Throws `APIKeyError`, and sends
  /// nothing, where there is no credential; else the errors of the HTTP stack.
  virtual platform::Task<BehavioralEventContainer> sendEvent(
      platform::Dictionary payload) const = 0;

  /// Posts the identify record with time zone and timestamp. Throws as `sendEvent` does.
  virtual platform::Task<BehavioralEventContainer> identifyUser(
      platform::Dictionary payload) const = 0;

  virtual const TimestampGenerator& timestampGenerator() const = 0;

  /// What every event carries: user, anonymous user, time zone, time and channel, as of now.
  platform::Dictionary commonEventParameters() const;

  /// The payload, with the common fields in place of its own of the same names.
  platform::Dictionary makeEventParameters(platform::Dictionary payload) const;

  /// The dictionary with "timezone" and "timestamp" as of now.
  platform::Dictionary mergingTimestamp(platform::Dictionary dictionary) const;
};

}  // namespace quenwick
