#pragma once

#include <compare>
#include <concepts>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "quenwick/platform/Export.h"

namespace quenwick::inline v0 {

/// The types that hold whole numbers of up to 64 bits; flags and characters are none.
template <class Number>
concept Integer = std::integral<Number> && sizeof(Number) <= 8 && !std::same_as<Number, bool> &&
                  !std::same_as<Number, char> && !std::same_as<Number, wchar_t> &&
                  !std::same_as<Number, char8_t> && !std::same_as<Number, char16_t> &&
                  !std::same_as<Number, char32_t>;

/// A decimal number, as amounts of money are kept: up to 38 significant digits, times a power of
/// ten from -128 to 127. For holding, comparing and printing; it does no arithmetic.
class QUENWICK_EXPORT Decimal {
 public:
  /// Zero.
  Decimal() = default;
  /// The number, to its last digit.
  Decimal(Integer auto number) : text_(std::to_string(number)) {}

  /// Reads "19.99", "-.5" or "2.5e-3", with a point in every locale. Digits beyond the 38th are
  /// rounded, a half away from zero. None for any other text, "NaN" among them, and for a number
  /// that is too large or too small.
  static std::optional<Decimal> parse(std::string_view text);

  /// The number in plain digits, without exponent or needless zeros: "19.9", "-0.5", "1200".
  const std::string& description() const { return text_; }

  friend bool operator==(const Decimal&, const Decimal&) = default;
  /// By size: 10 is more than 9.5.
  friend std::strong_ordering operator<=>(const Decimal& left, const Decimal& right);

 private:
  explicit Decimal(std::string text) : text_(std::move(text)) {}

  std::string text_ = "0";  // equal numbers have equal texts
};

}  // namespace quenwick::inline v0
