#pragma once

#include <string_view>

#include "quenwick/API/Stack/Coding.h"

namespace quenwick {

/// The type of an answer that is of no interest: any body decodes into it, also none at all.
struct Nothing {
  friend bool operator==(const Nothing&, const Nothing&) = default;
};

template <>
struct Coding<Nothing> {
  static constexpr std::string_view expected = "a value";
  static Nothing decode(const platform::Value&, const CodingPath&) { return {}; }
  static Nothing withoutReading() { return {}; }
  static platform::Value encode(Nothing) { return platform::Dictionary(); }
};

}  // namespace quenwick
