#include "quenwick/Stored/UserDefaultsSerializable.h"

namespace quenwick {

void remove(platform::UserDefaults& defaults, std::string_view key) {
  defaults.removeObject(std::string(key));
}

std::optional<platform::UUID> uuid(const platform::UserDefaults& defaults, std::string_view key) {
  auto text = fetchOptional<std::string>(defaults, key);
  return text ? platform::UUID::parse(*text) : std::nullopt;
}

void set(platform::UserDefaults& defaults, const platform::UUID& uuid, std::string_view key) {
  save(defaults, uuid.uuidString(), key);
}

}  // namespace quenwick
