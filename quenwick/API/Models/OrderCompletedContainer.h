#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quenwick/API/Models/OrderCompletedProperties.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

class Analytics;

/// What led the user to an order.
struct Campaign {
  std::optional<std::string> rulesPicKey = {};
};

struct OrderCompletedContext {
  Campaign campaign = {};

  /// The install's, by `Analytics::shared()`.
  static OrderCompletedContext current();
};

/// The event of a completed order, with the install's rules key at the time it was made.
struct OrderCompletedContainer {
  static constexpr std::string_view type = "track";
  static constexpr std::string_view event = "order_completed";

  /// Takes the rules key from `Analytics::shared()`, or from the one given.
  explicit OrderCompletedContainer(OrderCompletedProperties orderProperties);
  OrderCompletedContainer(OrderCompletedProperties orderProperties, Analytics& analytics);
  /// With a context that was taken before.
  OrderCompletedContainer(OrderCompletedProperties orderProperties,
                          OrderCompletedContext orderContext);

  OrderCompletedContext context;
  OrderCompletedProperties properties;

  /// "type", "event", "context" (whose "campaign" is empty where there is no rules key) and
  /// "properties". None, with one error line, for what JSON cannot hold and for more than 1 MiB.
  std::optional<platform::Dictionary> asDictionary() const&;
  std::optional<platform::Dictionary> asDictionary() &&;
};

}  // namespace quenwick
