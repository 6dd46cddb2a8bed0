#pragma once

#include <cmath>
#include <concepts>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "quenwick/platform/Value.h"

namespace quenwick {

inline bool isNumber(const platform::Value& value) {
  return value.as<std::int64_t>() || value.as<std::uint64_t>() || value.as<double>();
}

/// The number where it has no fraction and the type can hold it; else none.
template <std::integral Number>
std::optional<Number> wholeNumber(const platform::Value& value) {
  auto fitted = [](auto number) {
    return std::in_range<Number>(number) ? std::optional(static_cast<Number>(number))
                                         : std::nullopt;
  };
  if (const auto* number = value.as<std::int64_t>()) return fitted(*number);
  if (const auto* number = value.as<std::uint64_t>()) return fitted(*number);
  const auto* number = value.as<double>();
  // Both bounds are powers of two, which a double holds to the last bit.
  constexpr double kEnd = 0x1p64;
  constexpr double kBegin = -0x1p63;
  if (!number || std::trunc(*number) != *number || *number < kBegin || *number >= kEnd) {
    return std::nullopt;
  }
  return *number < 0 ? fitted(static_cast<std::int64_t>(*number))
                     : fitted(static_cast<std::uint64_t>(*number));
}

/// The number, rounded to the type's precision; none where it is beyond the type's range.
template <std::floating_point Number>
std::optional<Number> realNumber(const platform::Value& value) {
  if (const auto* number = value.as<std::int64_t>()) return static_cast<Number>(*number);
  if (const auto* number = value.as<std::uint64_t>()) return static_cast<Number>(*number);
  const auto* number = value.as<double>();
  if (!number || std::fabs(*number) > static_cast<double>(std::numeric_limits<Number>::max())) {
    return std::nullopt;
  }
  return static_cast<Number>(*number);
}

}  // namespace quenwick
