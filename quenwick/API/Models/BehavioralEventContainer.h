#pragma once

#include <string>
#include <tuple>

#include "quenwick/API/Stack/Coding.h"

namespace quenwick {

/// The service's acknowledgement of an event.
struct BehavioralEventContainer {
  std::string message;
  std::string requestID;

  static constexpr auto fields() {
    return std::tuple{Field{"message", &BehavioralEventContainer::message},
                      Field{"request_id", &BehavioralEventContainer::requestID}};
  }

  friend bool operator==(const BehavioralEventContainer&,
                         const BehavioralEventContainer&) = default;
};

}  // namespace quenwick
