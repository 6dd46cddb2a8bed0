#include "quenwick/platform/JSONSerialization.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "quenwick/platform/Text.h"

namespace quenwick::platform {
namespace {

TEST(JSONSerialization, KeepsEveryBitOfNumbersAndTexts) {
  for (std::string text :
       {R"({"a":9223372036854775807,"b":-9223372036854775808,"c":18446744073709551615})",
        R"([1.5,3.0,-0.25,1.0,true,false,null,"ü€\n\u0001",{},[]])",
        R"({"z":1,"a":{"z":[1,[2,[3]]]}})"}) {
    EXPECT_EQ(JSONSerialization::text(JSONSerialization::parse(text)), text);
  }
}

TEST(JSONSerialization, AmountsAreWrittenInTheirShortestForm) {
  auto expect = [](double number) {
    auto text = JSONSerialization::text(Value(number));
    EXPECT_EQ(text, shortestDecimal(number)) << number;
  };
  for (std::int64_t hundredths = -100'000; hundredths <= 100'000; ++hundredths) {
    expect(static_cast<double>(hundredths) / 100);
  }
  for (double number :
       {0.005, 1.005, 1.115, 89.899999999999991, 9999999999999.99, -9999999999999.98,
        12345678901234.56, 1e13, 0.1 + 0.2, -0.0, 4503599627370496.5}) {
    expect(number);
    expect(-number);
  }
}

TEST(JSONSerialization, EscapesWhatATextMayNotHold) {
  std::string every;
  for (char c = 0; c >= 0 && c < 0x7f; ++c) every += c;
  every += "\x7f\u00fc\U0001F6D2\\";
  auto text = JSONSerialization::text(Value(every));
  EXPECT_TRUE(std::ranges::none_of(text, [](char c) { return c >= 0 && c < ' '; })) << text;
  EXPECT_NE(text.find(R"(\b\t\n\u000b\f\r\u000e)"), text.npos) << text;
  EXPECT_EQ(JSONSerialization::parse(text), Value(every));
}

TEST(JSONSerialization, FindsWhatItMustEscapeOrRefuseAtEveryPlace) {
  for (std::size_t length = 1; length < 20; ++length) {
    for (std::size_t at = 0; at < length; ++at) {
      for (char c : {'"', '\\', '\x1f', '\n', ' ', '!', '#', '[', ']', '\x7f'}) {
        std::string text(length, 'a');
        text[at] = c;
        EXPECT_EQ(JSONSerialization::parse(JSONSerialization::text(Value(text))), Value(text));
      }
      std::string broken(length, 'a');
      broken[at] = '\xC3';
      EXPECT_THROW(JSONSerialization::text(Value(broken)), JSONError);
    }
  }
}

TEST(JSONSerialization, TheLastOfDuplicateKeysHolds) {
  EXPECT_EQ(JSONSerialization::parse(R"({"a":1,"b":2,"a":3})"), (Dictionary{{"a", 3}, {"b", 2}}));
  std::string many = "{";
  Dictionary expected;
  for (int i = 0; i < 200; ++i) {
    auto key = std::to_string(i % 50) + " is a key";
    many += "\"" + key + "\":" + std::to_string(i) + ",";
    expected.set(key, i);
  }
  many.back() = '}';
  EXPECT_EQ(JSONSerialization::parse(many), expected);
}

TEST(JSONSerialization, RefusesValuesThatJSONCannotHold) {
  Value deep;
  for (int i = 0; i < 600; ++i) deep = List{deep};
  for (const Value& value : {Value(std::nan("")), Value(std::numeric_limits<double>::infinity()),
                             Value("\xff"), Value(Dictionary{{"\xff", 1}}), deep}) {
    EXPECT_THROW(JSONSerialization::text(value), JSONError);
  }
}

TEST(JSONSerialization, PrettyTextReadsBackTheSame) {
  Value value = Dictionary{{"a", List{1, Dictionary{}}}, {"b", List{}}};
  auto text = JSONSerialization::text(value, JSONWritingOptions::prettyPrinted);
  EXPECT_EQ(text, "{\n  \"a\": [\n    1,\n    {}\n  ],\n  \"b\": []\n}");
  EXPECT_EQ(JSONSerialization::parse(text), value);
}

}  // namespace
}  // namespace quenwick::platform
