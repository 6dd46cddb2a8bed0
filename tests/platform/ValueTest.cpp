#include "quenwick/platform/Value.h"

#include <gtest/gtest.h>

#include "tests/support/NestedValue.h"

namespace quenwick::platform {
namespace {

using tests::nested;

// A thread's stack would hold a tenth of it, level by level.
TEST(ValueTest, NestingCostsNoStack) {
  constexpr int kLevels = 100'000;
  auto deep = nested(kLevels, List{1, "two"});
  auto copy = deep;
  EXPECT_TRUE(copy == deep);
  EXPECT_FALSE(copy == nested(kLevels, List{1, "too"}));
  List list{deep, 1};
  Dictionary dictionary{{"deep", std::move(copy)}};
  EXPECT_TRUE(list.front() == *dictionary.find("deep"));
  list.front() = 1;
  dictionary = {};
  deep = *deep.as<Dictionary>()->find("in");
  EXPECT_TRUE(deep == nested(kLevels - 1, List{1, "two"}));
}

TEST(ValueTest, ANullPointerIsNull) {
  const char* text = nullptr;
  EXPECT_TRUE(Value(text).isNull());
  EXPECT_EQ((Dictionary{{"a", text}}), (Dictionary{{"a", nullptr}}));
  text = "";
  EXPECT_EQ(Value(text), Value(""));
  EXPECT_FALSE(Value(text).isNull());
}

TEST(ValueTest, ACopyIsEqualAndItsOwn) {
  const Value whole = Dictionary{{"a", List{1, Dictionary{{"b", nullptr}}, List{}, "text"}},
                                 {"c", Dictionary{}},
                                 {"d", List{2.5, true, 18446744073709551615U}}};
  Value copy = whole;
  EXPECT_EQ(copy, whole);
  copy.as<Dictionary>()->find("a")->as<List>()->at(1) = 7;
  EXPECT_NE(copy, whole);
  copy = whole;
  EXPECT_EQ(copy, whole);
  for (const Value& other :
       {Value(Dictionary{{"a", List{1}}}), Value(List{1}), Value(List{}), Value(Dictionary{})}) {
    EXPECT_NE(whole, other);
    EXPECT_NE(other, whole);
  }
  EXPECT_NE(Value(Dictionary{{"a", List{1}}}), Value(Dictionary{{"b", List{1}}}));
  EXPECT_NE(Value(List{List{1}}), Value(List{Dictionary{{"a", 1}}}));
}

}  // namespace
}  // namespace quenwick::platform
