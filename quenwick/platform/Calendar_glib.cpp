#include <glib.h>

#include <memory>
#include <mutex>
#include <string_view>

#include "quenwick/platform/Calendar.h"

namespace quenwick::platform {
namespace {

struct Free {
  void operator()(GDateTime* date) const { g_date_time_unref(date); }
  void operator()(GTimeZone* zone) const { g_time_zone_unref(zone); }
};

using Zone = std::unique_ptr<GTimeZone, Free>;

/// The local time zone. Which one it is is asked for once a second at most: the answer is in the
/// file system.
Zone localZone() {
  struct Known {
    std::mutex mutex;
    Zone zone;
    std::string setting;
    std::chrono::steady_clock::time_point askedAt;
  };
  static auto& known = *new Known;
  std::lock_guard lock(known.mutex);
  const char* variable = g_getenv("TZ");
  std::string_view setting = variable ? variable : "";
  auto now = std::chrono::steady_clock::now();
  if (!known.zone || known.setting != setting || now - known.askedAt > std::chrono::seconds(1)) {
    known.zone.reset(g_time_zone_new_local());
    known.setting = setting;
    known.askedAt = now;
  }
  return Zone(g_time_zone_ref(known.zone.get()));
}

}  // namespace

std::optional<Date> Calendar::addingDays(int days, Date date) {
  auto seconds = std::chrono::floor<std::chrono::seconds>(date);
  std::unique_ptr<GDateTime, Free> from(
      g_date_time_new_from_unix_utc(seconds.time_since_epoch().count()));
  if (!from) return std::nullopt;
  std::unique_ptr<GDateTime, Free> local(g_date_time_to_timezone(from.get(), localZone().get()));
  if (!local) return std::nullopt;
  std::unique_ptr<GDateTime, Free> to(g_date_time_add_days(local.get(), days));
  if (!to) return std::nullopt;
  return Date(std::chrono::seconds(g_date_time_to_unix(to.get()))) + (date - seconds);
}

std::string TimeZone::currentIdentifier() { return g_time_zone_get_identifier(localZone().get()); }

}  // namespace quenwick::platform
