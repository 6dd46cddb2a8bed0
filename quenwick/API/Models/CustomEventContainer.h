#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quenwick/platform/Value.h"

namespace quenwick {

/// An event of the host's own naming.
struct CustomEventContainer {
  static constexpr std::string_view type = "custom";

  std::string event;
  platform::Dictionary properties = {};

  /// "type", "event" and "properties". None, with one error line "Could not log event - ...", for
  /// what JSON cannot hold and for more than 1 MiB.
  std::optional<platform::Dictionary> asDictionary() const&;
  std::optional<platform::Dictionary> asDictionary() &&;
};

}  // namespace quenwick
