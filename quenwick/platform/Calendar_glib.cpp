#include <glib.h>

#include <filesystem>
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
using std::filesystem::path;

/// The folder whose files are named as the zones that they describe.
path zoneFolder() {
  const char* folder = g_getenv("TZDIR");
  return folder ? folder : "/usr/share/zoneinfo";
}

/// The file's place in the folder; none where it is elsewhere.
std::optional<std::string> placeIn(const path& folder, const path& file) {
  auto place = file.lexically_relative(folder).string();
  if (place.empty() || place.starts_with("..")) return std::nullopt;
  for (std::string_view variant : {"posix/", "right/"}) {
    if (place.starts_with(variant)) place.erase(0, variant.size());
  }
  return place;
}

/// The name of a zone that is told as `TZ` is: it may have a colon before it, be a path, or lead to
/// a zone by links. "UTC" for what is no file of a zone, such as "CET-1CEST".
std::string zoneName(std::string_view told) {
  constexpr int kMostLinks = 8;
  if (told.starts_with(':')) told.remove_prefix(1);
  auto folder = zoneFolder();
  auto file = (folder / told).lexically_normal();
  std::error_code error;
  for (int links = 0; links < kMostLinks && std::filesystem::is_regular_file(file, error);
       ++links) {
    path target;
    if (std::filesystem::is_symlink(file, error)) {
      target = (file.parent_path() / std::filesystem::read_symlink(file, error)).lexically_normal();
    }
    auto place = placeIn(folder, file);
    // A link within the folder is another name of the zone.
    if (place && (target.empty() || placeIn(folder, target))) return *place;
    if (target.empty()) break;
    file = target;
  }
  return "UTC";
}

struct LocalZone {
  Zone zone;
  std::string name;
};

/// The local time zone. Which one it is is asked for once a second at most: the answer is in the
/// file system.
LocalZone localZone() {
  struct Known {
    std::mutex mutex;
    LocalZone local;
    std::string setting;
    std::chrono::steady_clock::time_point askedAt;
  };
  static auto& known = *new Known;
  std::lock_guard lock(known.mutex);
  auto& [zone, name] = known.local;
  const char* variable = g_getenv("TZ");
  std::string_view setting = variable ? variable : "";
  auto now = std::chrono::steady_clock::now();
  if (!zone || known.setting != setting || now - known.askedAt > std::chrono::seconds(1)) {
    zone.reset(g_time_zone_new_local());
    name = zoneName(g_time_zone_get_identifier(zone.get()));
    known.setting = setting;
    known.askedAt = now;
  }
  return {Zone(g_time_zone_ref(zone.get())), name};
}

}  // namespace

std::optional<Date> Calendar::addingDays(int days, Date date) {
  auto seconds = std::chrono::floor<std::chrono::seconds>(date);
  std::unique_ptr<GDateTime, Free> from(
      g_date_time_new_from_unix_utc(seconds.time_since_epoch().count()));
  if (!from) return std::nullopt;
  std::unique_ptr<GDateTime, Free> local(
      g_date_time_to_timezone(from.get(), localZone().zone.get()));
  if (!local) return std::nullopt;
  std::unique_ptr<GDateTime, Free> to(g_date_time_add_days(local.get(), days));
  if (!to) return std::nullopt;
  return Date(std::chrono::seconds(g_date_time_to_unix(to.get()))) + (date - seconds);
}

std::string TimeZone::currentIdentifier() { return localZone().name; }

}  // namespace quenwick::platform
