#include "quenwick/API/Requesters/BehavioralEventRequestable.h"

#include <utility>

#include "quenwick/platform/Calendar.h"
#include "quenwick/state/Analytics.h"

namespace quenwick {

using platform::Dictionary;

Dictionary BehavioralEventRequestable::commonEventParameters() const {
  return makeEventParameters({});
}

Dictionary BehavioralEventRequestable::makeEventParameters(Dictionary payload) const {
  static const auto& channel = *new Dictionary{{"app", Dictionary{{"name", "sdk"}}}};
  auto& analytics = Analytics::shared();
  payload.set("user_id", analytics.qwu().value_or(""));
  payload.set("anonymous_id", analytics.anonymousID());
  payload = mergingTimestamp(std::move(payload));
  payload.set("channel", channel);
  return payload;
}

Dictionary BehavioralEventRequestable::mergingTimestamp(Dictionary dictionary) const {
  dictionary.set("timezone", platform::TimeZone::currentIdentifier());
  dictionary.set("timestamp", timestampGenerator()());
  return dictionary;
}

}  // namespace quenwick
