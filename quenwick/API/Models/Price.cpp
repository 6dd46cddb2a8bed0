#include "quenwick/API/Models/Price.h"

#include <array>
#include <charconv>
#include <cmath>

namespace quenwick {

Price::Price(const char* text) {
  if (text) text_ = text;
}

std::optional<std::string> Price::twoDecimals(double number) {
  if (!std::isfinite(number)) return std::nullopt;
  std::array<char, 320> digits;  // the largest number has 309 before the point
  auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number,
                           std::chars_format::fixed, 2)
                 .ptr;
  return std::string(digits.data(), end);
}

}  // namespace quenwick
