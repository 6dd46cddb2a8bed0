#include <glib.h>

#include <memory>
#include <utility>

#include "quenwick/platform/UUID.h"

namespace quenwick::platform {

std::optional<UUID> UUID::parse(std::string_view text) {
  std::string owned(text);
  if (owned.find('\0') != owned.npos || !g_uuid_string_is_valid(owned.c_str())) return std::nullopt;
  for (char& c : owned) c = g_ascii_toupper(c);
  return UUID(std::move(owned));
}

UUID UUID::random() {
  std::unique_ptr<char, decltype(&g_free)> text(g_uuid_string_random(), &g_free);
  return parse(text.get()).value();
}

}  // namespace quenwick::platform
