#include <glib.h>
#include <sys/utsname.h>

#include <algorithm>
#include <atomic>
#include <memory>

#include "quenwick/platform/System.h"

namespace quenwick::platform {
namespace {

std::atomic<int> systemVersion = -1;

std::string osInfo(const char* key, const char* fallback) {
  std::unique_ptr<char, decltype(&g_free)> value(g_get_os_info(key), &g_free);
  return value && *value ? value.get() : fallback;
}

/// "de_AT" as "de-AT"; empty for the names of no language, and for forms with a codeset, which
/// stand without it further down the same list.
std::string languageTag(std::string_view name) {
  if (name.empty() || name == "C" || name == "POSIX" || name.find_first_of(".@") != name.npos) {
    return {};
  }
  std::string tag(name);
  std::ranges::replace(tag, '_', '-');
  bool isTag = std::ranges::all_of(tag, [](char c) { return g_ascii_isalnum(c) || c == '-'; });
  return isTag ? tag : std::string();
}

}  // namespace

std::string System::name() { return osInfo(G_OS_INFO_KEY_ID, "linux"); }

std::string System::version() { return osInfo(G_OS_INFO_KEY_VERSION_ID, "0"); }

std::string System::deviceType() {
  utsname names{};
  return uname(&names) == 0 ? names.machine : "unknown";
}

std::vector<std::string> System::preferredLanguages() {
  std::vector<std::string> tags;
  for (auto names = g_get_language_names(); *names; ++names) {
    auto tag = languageTag(*names);
    if (!tag.empty() && std::ranges::find(tags, tag) == tags.end()) tags.push_back(tag);
  }
  return tags;
}

bool systemAtLeast(int version) {
  int known = systemVersion;
  return known < 0 || known >= version;
}

void setSystemVersion(std::optional<int> version) { systemVersion = version.value_or(-1); }

}  // namespace quenwick::platform
