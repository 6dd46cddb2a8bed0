#pragma once

#include <optional>
#include <string_view>

namespace quenwick::sandbox {

/// The two places that judge what they are sent.
enum class BehaviorPart { verification, events };

constexpr std::string_view nameOf(BehaviorPart part) {
  return part == BehaviorPart::events ? "events" : "verification";
}

/// None if there is no part of that name.
constexpr std::optional<BehaviorPart> behaviorPart(std::string_view name) {
  for (const BehaviorPart part : {BehaviorPart::verification, BehaviorPart::events}) {
    if (nameOf(part) == name) return part;
  }
  return std::nullopt;
}

}  // namespace quenwick::sandbox
