#include "quenwick/API/Models/Decimal.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

namespace quenwick {
namespace {

std::string described(std::string_view text) {
  auto number = Decimal::parse(text);
  return number ? number->description() : "none";
}

TEST(DecimalTest, PrintsPlainDigitsWithoutNeedlessZeros) {
  const std::string nines(38, '9');
  const std::pair<std::string, std::string> kNumbers[] = {
      {"19.99", "19.99"},
      {"19.90", "19.9"},
      {"+5.00", "5"},
      {"-.5", "-0.5"},
      {"5.", "5"},
      {"000120", "120"},
      {"0.0", "0"},
      {"-0", "0"},
      {"-0.000e5", "0"},
      {"2.5e-3", "0.0025"},
      {"12E+2", "1200"},
      {"1.25e1", "12.5"},
      {"1e127", "1" + std::string(127, '0')},
      {"1e-128", "0." + std::string(127, '0') + "1"},
      {nines + "e127", nines + std::string(127, '0')},
      {"1e164", "1" + std::string(164, '0')},
      {"0.1234567890123456789012345678901234567", "0.1234567890123456789012345678901234567"},
      // From the 39th digit on a number is rounded.
      {"1234567890123456789012345678901234567844", "1234567890123456789012345678901234567800"},
      {"1.00000000000000000000000000000000000005", "1.0000000000000000000000000000000000001"},
      {"-1.00000000000000000000000000000000000005", "-1.0000000000000000000000000000000000001"},
      {"1.000000000000000000000000000000000000049", "1"},
      {nines + "5", "1" + std::string(39, '0')},
      {nines + ".4", nines},
      {"129" + std::string(36, '9'), "13" + std::string(37, '0')},
      {std::string(100'000, '0') + "7." + std::string(100'000, '0'), "7"},
  };
  for (const auto& [text, description] : kNumbers) {
    EXPECT_EQ(described(text), description) << text.substr(0, 60);
    EXPECT_EQ(described(description), description) << "read back";
  }
}

TEST(DecimalTest, IsNoneForWhatItCannotHold) {
  const char* const kNoNumbers[] = {
      "",      "-",  ".",  "+.",  "--1", "+-1", "-+1",   "NaN",   "nan", "inf",   "1,5",
      "1.2.3", " 1", "1 ", "0x1", "1e",  "1e+", "1e+-2", "1e1.5", "e5",  "1_000", "\xd9\xa1"};
  for (const auto* text : kNoNumbers) EXPECT_EQ(described(text), "none") << text;
  for (auto text : {"1e165", "1e-129", "10000000000e155", "1e2147483647", "1e99999999999999999999",
                    "1e-99999999999999999999"}) {
    EXPECT_EQ(described(text), "none") << text;
  }
  EXPECT_EQ(described(std::string("1\0", 2)), "none");
}

TEST(DecimalTest, HoldsEveryInteger) {
  EXPECT_EQ(Decimal().description(), "0");
  EXPECT_EQ(Decimal(std::numeric_limits<std::int64_t>::min()).description(),
            "-9223372036854775808");
  EXPECT_EQ(Decimal(std::numeric_limits<std::uint64_t>::max()).description(),
            "18446744073709551615");
  EXPECT_EQ(Decimal(-7), *Decimal::parse("-7.00"));
}

TEST(DecimalTest, IsOrderedByValue) {
  const char* const kAscending[] = {"-1e30", "-100.5", "-100", "-99.99", "-0.02", "-0.019",
                                    "0",     "1e-128", "0.5",  "0.51",   "5",     "5.000001",
                                    "9",     "10",     "10.1", "99",     "1e30"};
  std::vector<Decimal> numbers;
  for (const auto* text : kAscending) numbers.push_back(*Decimal::parse(text));
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    for (std::size_t k = 0; k < numbers.size(); ++k) {
      EXPECT_EQ(numbers[i] <=> numbers[k], i <=> k) << kAscending[i] << " " << kAscending[k];
      EXPECT_EQ(numbers[i] == numbers[k], i == k);
    }
  }
}

}  // namespace
}  // namespace quenwick
