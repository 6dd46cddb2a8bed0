#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "quenwick/platform/URLRequest.h"
#include "quenwick/platform/UUID.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

/// The items of one service in the keychain, by key. Readers give nothing for an item that is
/// absent, out of reach or of another encoding; writers say whether the item is stored. From any
/// thread; never throws.
class Keychain {
 public:
  static const Keychain& standard();

  explicit Keychain(std::string serviceName) : serviceName_(std::move(serviceName)) {}
  const std::string& serviceName() const { return serviceName_; }

  std::optional<platform::Bytes> data(std::string_view key) const;
  /// What refers to the item for as long as it is kept, for the platform's own use.
  std::optional<platform::Bytes> dataRef(std::string_view key) const;
  std::optional<std::string> string(std::string_view key) const;
  std::optional<platform::UUID> uuid(std::string_view key) const;
  std::optional<std::int64_t> integer(std::string_view key) const;
  std::optional<float> floatValue(std::string_view key) const;
  std::optional<double> doubleValue(std::string_view key) const;
  std::optional<bool> boolValue(std::string_view key) const;

  bool set(const platform::Bytes& data, std::string_view key) const;
  bool set(std::string_view text, std::string_view key) const;
  bool set(const char* text, std::string_view key) const {
    return set(std::string_view(text), key);
  }
  bool set(const platform::UUID& uuid, std::string_view key) const;
  bool set(std::int64_t number, std::string_view key) const;
  bool set(int number, std::string_view key) const { return set(std::int64_t{number}, key); }
  bool set(float number, std::string_view key) const;
  bool set(double number, std::string_view key) const;
  bool set(bool flag, std::string_view key) const;
  /// An object of any other kind, as its keyed archive.
  bool set(const platform::List& list, std::string_view key) const;
  bool set(const platform::Dictionary& dictionary, std::string_view key) const;

  /// Whether there was an item to delete, and it is gone.
  bool removeObject(std::string_view key) const;

 private:
  bool setArchived(const platform::Value& root, std::string_view key) const;
  /// Replaces the bytes of an item that there is.
  bool update(const platform::Bytes& data, std::string_view key) const;

  std::string serviceName_;
};

}  // namespace quenwick
