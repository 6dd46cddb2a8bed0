#include "quenwick/API/Models/Decimal.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <system_error>
#include <utility>

namespace quenwick::inline v0 {
namespace {

constexpr std::size_t kMaximumDigits = 38;
constexpr std::int64_t kSmallestExponent = -128;
constexpr std::int64_t kLargestExponent = 127;

/// The number `digits` times ten to the `exponent`, without zeros at either end; zero has no
/// digits.
struct Magnitude {
  std::string digits;
  std::int64_t exponent = 0;

  void trim() {
    digits.erase(0, std::min(digits.find_first_not_of('0'), digits.size()));
    auto kept = digits.find_last_not_of('0') + 1;  // 0 where there is none
    exponent += static_cast<std::int64_t>(digits.size() - kept);
    digits.resize(kept);
  }

  void round() {
    if (digits.size() <= kMaximumDigits) return;
    bool isUp = digits[kMaximumDigits] >= '5';
    exponent += static_cast<std::int64_t>(digits.size() - kMaximumDigits);
    digits.resize(kMaximumDigits);
    if (isUp) {
      auto last = digits.find_last_not_of('9');
      digits.resize(last + 1);  // the nines become zeros, which are left out
      exponent += static_cast<std::int64_t>(kMaximumDigits - digits.size());
      if (digits.empty()) digits = "0";
      ++digits.back();
    }
    trim();
  }

  bool isHeld() const {
    if (digits.empty()) return true;
    auto excess = static_cast<std::size_t>(std::max<std::int64_t>(exponent - kLargestExponent, 0));
    return exponent >= kSmallestExponent && excess <= kMaximumDigits - digits.size();
  }
};

std::optional<std::int64_t> parseExponent(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  int exponent = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), exponent);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return exponent;
}

std::optional<Magnitude> parseMagnitude(std::string_view text) {
  Magnitude magnitude;
  if (auto mark = text.find_first_of("eE"); mark != text.npos) {
    auto exponent = parseExponent(text.substr(mark + 1));
    if (!exponent) return std::nullopt;
    magnitude.exponent = *exponent;
    text = text.substr(0, mark);
  }
  magnitude.digits = text;
  if (auto point = text.find('.'); point != text.npos) {
    magnitude.digits.erase(point, 1);
    magnitude.exponent -= static_cast<std::int64_t>(text.size() - point - 1);
  }
  auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  if (magnitude.digits.empty() || !std::ranges::all_of(magnitude.digits, isDigit)) {
    return std::nullopt;
  }
  magnitude.trim();
  magnitude.round();
  return magnitude.isHeld() ? std::optional(std::move(magnitude)) : std::nullopt;
}

std::string plainDigits(Magnitude magnitude) {
  auto& [digits, exponent] = magnitude;
  if (digits.empty()) return "0";
  if (exponent >= 0) return digits.append(static_cast<std::size_t>(exponent), '0');
  auto decimals = static_cast<std::size_t>(-exponent);
  if (digits.size() <= decimals) digits.insert(0, decimals - digits.size() + 1, '0');
  return digits.insert(digits.size() - decimals, 1, '.');
}

bool isNegative(std::string_view text) { return text.starts_with('-'); }

std::strong_ordering compareMagnitudes(std::string_view left, std::string_view right) {
  auto byLength = std::min(left.find('.'), left.size()) <=> std::min(right.find('.'), right.size());
  return byLength != 0 ? byLength : left <=> right;
}

}  // namespace

std::optional<Decimal> Decimal::parse(std::string_view text) {
  bool hasMinus = isNegative(text);
  if (hasMinus || text.starts_with('+')) text.remove_prefix(1);
  auto magnitude = parseMagnitude(text);
  if (!magnitude) return std::nullopt;
  bool isBelowZero = hasMinus && !magnitude->digits.empty();
  return Decimal((isBelowZero ? "-" : "") + plainDigits(*std::move(magnitude)));
}

std::strong_ordering operator<=>(const Decimal& left, const Decimal& right) {
  std::string_view a = left.text_;
  std::string_view b = right.text_;
  if (isNegative(a) != isNegative(b)) return isNegative(b) <=> isNegative(a);
  return isNegative(a) ? compareMagnitudes(b.substr(1), a.substr(1)) : compareMagnitudes(a, b);
}

}  // namespace quenwick::inline v0
