#pragma once

#include <tuple>

#include "quenwick/API/Stack/Coding.h"

namespace quenwick {

/// The service's envelope: a payload under the key "data".
template <class Payload>
struct DataContainer {
  Payload value = {};

  static constexpr auto fields() { return std::tuple{Field{"data", &DataContainer::value}}; }

  friend bool operator==(const DataContainer&, const DataContainer&) = default;
};

}  // namespace quenwick
