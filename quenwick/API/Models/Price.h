#pragma once

#include <concepts>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "quenwick/API/Models/Decimal.h"
#include "quenwick/platform/Export.h"

namespace quenwick::inline v0 {

/// A price or revenue, carried as text. Text stands as it is given ("3.1"), a `Decimal` in its own
/// description; other numbers get two decimals and a point in every locale: 5 is "5.00" to the last
/// of 64 bits, 3.14159 is "3.14". A number is rounded as it is held: 1.005, a little less than
/// that, is "1.00".
class QUENWICK_EXPORT Price {
 public:
  Price(const char* text);
  Price(std::nullptr_t) = delete;
  Price(std::string text) : text_(std::move(text)) {}
  Price(std::string_view text) : text_(std::string(text)) {}
  Price(const Decimal& number) : text_(number.description()) {}
  Price(Integer auto number) : text_(std::to_string(number) + ".00") {}
  Price(std::floating_point auto number) : text_(twoDecimals(static_cast<double>(number))) {}

  /// None for a NaN, an infinity or a null pointer: a record that holds such a price is refused
  /// when it is made a dictionary.
  const std::optional<std::string>& text() const& { return text_; }
  std::optional<std::string> text() && { return std::move(text_); }

  friend bool operator==(const Price&, const Price&) = default;

 private:
  static std::optional<std::string> twoDecimals(double number);

  std::optional<std::string> text_;
};

}  // namespace quenwick::inline v0
