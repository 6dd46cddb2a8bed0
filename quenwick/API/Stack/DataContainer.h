#pragma once

#include "quenwick/API/Stack/Coding.h"

namespace quenwick {

/// The service's envelope: a payload under the key "data".
template <class Payload>
struct DataContainer {
  Payload value = {};

  friend bool operator==(const DataContainer&, const DataContainer&) = default;
};

/// The key must be there, whatever the payload is: an envelope without one is none.
template <class Payload>
struct Coding<DataContainer<Payload>> {
  static constexpr std::string_view key = "data";
  static constexpr std::string_view expected = "an object";

  static DataContainer<Payload> decode(const platform::Value& value, const CodingPath& path) {
    const auto* object = value.as<platform::Dictionary>();
    if (!object) path.failMismatch(expected, value);
    const auto* payload = object->find(key);
    CodingPath place(path, key);
    if (!payload) place.failMissing(Coding<Payload>::expected);
    return {Coding<Payload>::decode(*payload, place)};
  }
  static platform::Value encode(const DataContainer<Payload>& container) {
    platform::Dictionary object;
    object.set(std::string(key), Coding<Payload>::encode(container.value));
    return object;
  }
};

}  // namespace quenwick
