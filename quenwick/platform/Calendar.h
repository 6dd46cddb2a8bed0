#pragma once

#include <optional>
#include <string>

#include "quenwick/platform/Clock.h"

namespace quenwick::platform {

/// The Gregorian calendar in the system's time zone.
struct Calendar {
  /// The date that many calendar days later, at the same time of day; a change of the clocks in
  /// between makes those days longer or shorter. None beyond the calendar's end.
  static std::optional<Date> addingDays(int days, Date date);
};

struct TimeZone {
  /// The name of the system's time zone as it was set, "Europe/Vienna".
  static std::string currentIdentifier();
};

}  // namespace quenwick::platform
