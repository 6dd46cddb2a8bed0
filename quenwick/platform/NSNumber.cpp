#include "quenwick/platform/NSNumber.h"

#include <cmath>
#include <limits>

namespace quenwick::platform {

std::int64_t NSNumber::integerValue() const {
  using Limits = std::numeric_limits<std::int64_t>;
  if (const auto* real = std::get_if<double>(&storage_)) {
    if (std::isnan(*real)) return 0;
    if (*real >= 0x1p63) return Limits::max();
    if (*real < -0x1p63) return Limits::min();
  } else if (const auto* large = std::get_if<std::uint64_t>(&storage_)) {
    if (*large > static_cast<std::uint64_t>(Limits::max())) return Limits::max();
  }
  return std::visit([](auto number) { return static_cast<std::int64_t>(number); }, storage_);
}

float NSNumber::floatValue() const { return static_cast<float>(doubleValue()); }

double NSNumber::doubleValue() const {
  return std::visit([](auto number) { return static_cast<double>(number); }, storage_);
}

bool NSNumber::boolValue() const {
  return std::visit([](auto number) { return number != 0; }, storage_);
}

}  // namespace quenwick::platform
