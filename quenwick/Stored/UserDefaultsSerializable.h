#pragma once

#include <concepts>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "quenwick/platform/FatalError.h"
#include "quenwick/platform/UUID.h"
#include "quenwick/platform/UserDefaults.h"

namespace quenwick {

/// How a kind of value is held by the preferences store: `StoredValue` is the held form,
/// `storedValue` and `init` convert. A kind of the host's own is added by a specialisation.
template <class T>
struct UserDefaultsForm;

template <class T>
struct UserDefaultsIdentityForm {
  using StoredValue = T;
  static T storedValue(T value) { return value; }
  static std::optional<T> init(T storedValue) { return storedValue; }
};

template <>
struct UserDefaultsForm<bool> : UserDefaultsIdentityForm<bool> {};
template <>
struct UserDefaultsForm<std::int64_t> : UserDefaultsIdentityForm<std::int64_t> {};
template <>
struct UserDefaultsForm<std::uint64_t> : UserDefaultsIdentityForm<std::uint64_t> {};
template <>
struct UserDefaultsForm<float> : UserDefaultsIdentityForm<float> {};
template <>
struct UserDefaultsForm<double> : UserDefaultsIdentityForm<double> {};
template <>
struct UserDefaultsForm<std::string> : UserDefaultsIdentityForm<std::string> {};

/// The kinds of value that may be stored.
template <class T>
concept UserDefaultsSerializable =
    requires(T value, typename UserDefaultsForm<T>::StoredValue stored) {
      { UserDefaultsForm<T>::storedValue(value) } -> std::convertible_to<platform::DefaultsValue>;
      { UserDefaultsForm<T>::init(stored) } -> std::same_as<std::optional<T>>;
    };

/// The value under the key; none where it is absent or of another kind.
template <UserDefaultsSerializable T>
std::optional<T> fetchOptional(const platform::UserDefaults& defaults, std::string_view key) {
  auto object = defaults.object(key);
  if (!object) return std::nullopt;
  auto* stored = std::get_if<typename UserDefaultsForm<T>::StoredValue>(&*object);
  return stored ? UserDefaultsForm<T>::init(std::move(*stored)) : std::nullopt;
}

/// The value under the key, which must be there: without one the process stops.
template <UserDefaultsSerializable T>
T fetch(const platform::UserDefaults& defaults, std::string_view key) {
  auto value = fetchOptional<T>(defaults, key);
  if (!value) platform::fatalError("No value is stored for the key " + std::string(key));
  return *std::move(value);
}

/// Whether the value was taken: one that cannot be kept is refused with a line.
template <UserDefaultsSerializable T>
bool save(platform::UserDefaults& defaults, T value, std::string_view key) {
  return defaults.setObject(UserDefaultsForm<T>::storedValue(std::move(value)), std::string(key));
}

void remove(platform::UserDefaults& defaults, std::string_view key);

/// Gives the key a value to be read while none is stored. Not written to disk.
template <UserDefaultsSerializable T>
void registerDefault(platform::UserDefaults& defaults, T value, std::string_view key) {
  defaults.registerDefaults(
      {{std::string(key), UserDefaultsForm<T>::storedValue(std::move(value))}});
}

/// The identifier whose text is stored under the key; none where it is absent or no identifier.
std::optional<platform::UUID> uuid(const platform::UserDefaults& defaults, std::string_view key);

void set(platform::UserDefaults& defaults, const platform::UUID& uuid, std::string_view key);

}  // namespace quenwick
