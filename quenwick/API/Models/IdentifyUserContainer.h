#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quenwick/platform/Value.h"

namespace quenwick {

class Analytics;

/// Says which user of the host's this install's anonymous user is.
struct IdentifyUserContainer {
  static constexpr std::string_view type = "identify";

  /// Takes the anonymous identifier from `Analytics::shared()`, or from the one given; it is made
  /// where the install has none.
  explicit IdentifyUserContainer(std::string user);
  IdentifyUserContainer(std::string user, Analytics& analytics);

  std::string userID;
  std::string anonymousID;

  /// "type", "user_id" and "anonymous_id". None, with one error line "Could not log event - ...",
  /// for an identifier that is not UTF-8 or longer than 1 MiB.
  std::optional<platform::Dictionary> asDictionary() const&;
  std::optional<platform::Dictionary> asDictionary() &&;
};

}  // namespace quenwick
