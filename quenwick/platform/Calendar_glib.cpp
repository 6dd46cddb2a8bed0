#include <glib.h>

#include <memory>

#include "quenwick/platform/Calendar.h"

namespace quenwick::platform {
namespace {

struct Free {
  void operator()(GDateTime* date) const { g_date_time_unref(date); }
  void operator()(GTimeZone* zone) const { g_time_zone_unref(zone); }
};

class SystemClock : public Clock {
 public:
  Date now() const override {
    return std::chrono::time_point_cast<Date::duration>(std::chrono::system_clock::now());
  }
};

}  // namespace

std::shared_ptr<const Clock> Clock::system() {
  static const auto& instance = *new std::shared_ptr<const Clock>(new SystemClock);
  return instance;
}

std::optional<Date> Calendar::addingDays(int days, Date date) {
  auto seconds = std::chrono::floor<std::chrono::seconds>(date);
  std::unique_ptr<GDateTime, Free> from(
      g_date_time_new_from_unix_local(seconds.time_since_epoch().count()));
  if (!from) return std::nullopt;
  std::unique_ptr<GDateTime, Free> to(g_date_time_add_days(from.get(), days));
  if (!to) return std::nullopt;
  return Date(std::chrono::seconds(g_date_time_to_unix(to.get()))) + (date - seconds);
}

std::string TimeZone::currentIdentifier() {
  std::unique_ptr<GTimeZone, Free> zone(g_time_zone_new_local());
  return g_time_zone_get_identifier(zone.get());
}

}  // namespace quenwick::platform
