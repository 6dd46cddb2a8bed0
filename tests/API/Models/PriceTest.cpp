#include "quenwick/API/Models/Price.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdio>
#include <limits>
#include <random>

namespace quenwick {
namespace {

TEST(PriceTest, IsTextByTheRuleOfItsKind) {
  const std::pair<Price, const char*> kPrices[] = {
      {"3.1", "3.1"},
      {std::string("about 5 €"), "about 5 €"},
      {std::string_view("5.00 or less").substr(0, 4), "5.00"},
      {"", ""},
      {5, "5.00"},
      {-7L, "-7.00"},
      {0U, "0.00"},
      {static_cast<signed char>(7), "7.00"},
      {std::numeric_limits<std::int64_t>::min(), "-9223372036854775808.00"},
      {std::numeric_limits<std::int64_t>::max(), "9223372036854775807.00"},
      {std::numeric_limits<std::uint64_t>::max(), "18446744073709551615.00"},
      {3.14159, "3.14"},
      {3.0, "3.00"},
      {1.005, "1.00"},
      {0.125, "0.12"},
      {0.375, "0.38"},
      {-0.001, "-0.00"},
      {1e22, "10000000000000000000000.00"},
      {19.99F, "19.99"},
      {16777217.0F, "16777216.00"},
      {2.5L, "2.50"},
      {*Decimal::parse("19.990"), "19.99"},
      {Decimal(5), "5"},
  };
  for (const auto& [price, text] : kPrices) EXPECT_EQ(price.text(), text);
}

TEST(PriceTest, HasNoTextForWhatIsNoNumber) {
  const char* missing = nullptr;
  const auto infinity = std::numeric_limits<double>::infinity();
  for (const Price& price : {Price(std::nan("")), Price(infinity), Price(-infinity),
                             Price(std::numeric_limits<float>::quiet_NaN()), Price(missing)}) {
    EXPECT_EQ(price.text(), std::nullopt);
  }
}

// Doubles of every size, by their bits, against the C library in its own locale.
TEST(PriceTest, HasTheDigitsOfTheCLibrary) {
  std::mt19937_64 random(20'240'501);
  std::array<char, 400> expected{};
  for (int i = 0; i < 200'000; ++i) {
    auto number = i % 2 == 0 ? std::bit_cast<double>(random())
                             : static_cast<double>(random() % 100'000'000) / 1000;
    if (!std::isfinite(number)) continue;
    std::snprintf(expected.data(), expected.size(), "%.2f", number);
    ASSERT_EQ(Price(number).text(), expected.data());
  }
}

}  // namespace
}  // namespace quenwick
