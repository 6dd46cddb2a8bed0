#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "quenwick/API/Models/CustomEventContainer.h"
#include "quenwick/API/Models/IdentifyUserContainer.h"
#include "quenwick/API/Models/OrderCompletedContainer.h"
#include "quenwick/API/Models/TrackContainer.h"
#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/state/Analytics.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick {
namespace {

using namespace std::chrono_literals;
using platform::Dictionary;
using platform::JSONSerialization;
using platform::List;
using platform::URL;
using platform::Value;

/// Whether JSON text of the dictionary is read back.
bool isHeldByJSON(const Dictionary& dictionary) {
  try {
    JSONSerialization::parse(JSONSerialization::text(dictionary));
    return true;
  } catch (const platform::JSONError&) {
    return false;
  }
}

class ContainersTest : public testing::Test {
 protected:
  tests::TemporaryDirectory folder_;
  Analytics analytics_{platform::UserDefaults::make(folder_.path() / "preferences.sqlite"),
                       std::make_shared<tests::ManualClock>(platform::Date(1'700'000'000s))};
  std::shared_ptr<tests::RecordingLog> log_ = tests::RecordingLog::install();
};

const ProductProperties kProduct{
    .id = "42",
    .title = "Boots \"à la\" \u2028 mode",
    .price = 89.9,
    .url = URL::parse("https://shop.example/p/42?x=%20"),
    .categories = std::vector<ProductCategory>{{.id = "1", .title = "Shoes"}, {.id = "2"}},
    .meta = Dictionary{{"type", "mine"}, {"n", -9007199254740993}, {"none", nullptr}}};

/// The dictionary of a container that is asked for it and kept, then moved from.
template <class Container>
void expectKept(Container container) {
  const auto& kept = container;
  auto first = kept.asDictionary();
  EXPECT_TRUE(first);
  EXPECT_EQ(kept.asDictionary(), first);
  EXPECT_EQ(std::move(container).asDictionary(), first);
}

TEST_F(ContainersTest, AContainerThatIsKeptCanBeAskedAgain) {
  expectKept(ProductAddedContainer{kProduct});
  expectKept(OrderCompletedContainer({.products = {{.id = "42"}}}, analytics_));
  expectKept(CustomEventContainer{"wished", {{"tags", List{"a", "b"}}}});
  expectKept(IdentifyUserContainer("user-7", analytics_));
}

TEST_F(ContainersTest, AnOrderAndAUserAreThoseOfTheInstallGiven) {
  auto context = [this] {
    OrderCompletedContainer order({.products = {{.id = "42"}}}, analytics_);
    return *order.asDictionary()->find("context");
  };
  EXPECT_EQ(context(), (Dictionary{{"campaign", Dictionary{}}}));
  analytics_.setRulesPicKey("own");
  EXPECT_EQ(context(), (Dictionary{{"campaign", Dictionary{{"rules_pic_key", "own"}}}}));
  EXPECT_EQ(IdentifyUserContainer("user-7", analytics_).anonymousID, analytics_.anonymousID());
}

TEST_F(ContainersTest, WhatJSONCannotHoldIsRefusedWithOneLine) {
  const auto nan = std::nan("");
  const auto infinity = std::numeric_limits<double>::infinity();
  const char* missing = nullptr;
  const std::string huge((1U << 20) + 1, 'x');
  auto product = [](ProductProperties properties) {
    return ProductViewedContainer{std::move(properties)}.asDictionary();
  };
  auto order = [this](OrderCompletedProperties properties) {
    return OrderCompletedContainer(std::move(properties), analytics_).asDictionary();
  };
  auto custom = [](std::string name, Dictionary properties) {
    return CustomEventContainer{std::move(name), std::move(properties)}.asDictionary();
  };
  auto fromDictionary = [](Dictionary dictionary) {
    return ProductProperties::from(std::move(dictionary))->asDictionary();
  };
  const std::string tooLarge = "it is larger than 1 MiB";
  const std::string notUTF8 = " holds text that is not UTF-8";
  const std::string notFinite = " is not a finite number";
  const std::pair<std::optional<Dictionary>, std::string> kRefused[] = {
      {product({.id = "\xff"}), "id" + notUTF8},
      {product({.id = "42", .title = "a\xc0\x80"}), "title" + notUTF8},
      {product({.id = "42", .price = "\xed\xa0\x80"}), "price" + notUTF8},
      {product({.id = "42", .price = nan}), "price" + notFinite},
      {product({.id = "42", .price = std::numeric_limits<float>::infinity()}), "price" + notFinite},
      {product({.id = "42", .price = missing}), "price" + notFinite},
      {product({.id = "42", .price = huge}), tooLarge},
      {product({.id = huge}), tooLarge},
      {product({.id = "42", .categories = std::vector<ProductCategory>{{.id = "1\xfe"}}}),
       "id" + notUTF8},
      {product({.id = "42", .meta = Dictionary{{"weight", nan}}}), "weight" + notFinite},
      {product({.id = "42", .meta = Dictionary{{"sizes", List{1, -infinity}}}}),
       "sizes" + notFinite},
      {product({.id = "42", .meta = Dictionary{{"\xff", 1}}}), "meta" + notUTF8},
      {product({.id = "42", .meta = Dictionary{{std::string(65, 'k'), "\xff"}}}), "meta" + notUTF8},
      {product({.id = "42", .meta = Dictionary{{huge, 1}}}), tooLarge},
      {product({.id = "42", .meta = Dictionary{{"k", List(1U << 20, nullptr)}}}), tooLarge},
      {order({.revenue = nan, .products = {{.id = "42"}}}), "revenue" + notFinite},
      {order({.products = {{.id = "42"}, {.id = "43", .price = nan}}}), "price" + notFinite},
      {order({.products = {{.id = "42", .title = "\xff"}}}), "title" + notUTF8},
      {custom("\xff", {}), "event" + notUTF8},
      {custom(huge, {}), tooLarge},
      {custom("waved", {{"at", nan}}), "at" + notFinite},
      {custom("waved", {{"\xff", 1}}), "properties" + notUTF8},
      {IdentifyUserContainer("\xff", analytics_).asDictionary(), "user_id" + notUTF8},
      {ProductSearchedContainer{{.query = "\xff"}}.asDictionary(), "query" + notUTF8},
      {CategoryViewedContainer{{.id = "1", .title = "\xff"}}.asDictionary(), "title" + notUTF8},
      {fromDictionary({{"id", "42"}, {"price", nan}}), "price" + notFinite},
      {fromDictionary({{"id", "42"}, {"title", "\xff"}}), "title" + notUTF8},
  };
  std::vector<std::string> expected;
  for (const auto& [dictionary, reason] : kRefused) {
    EXPECT_EQ(dictionary, std::nullopt) << reason;
    expected.push_back("error: Could not log event - " + reason + ".");
  }
  EXPECT_EQ(log_->lines(), expected);
}

TEST_F(ContainersTest, AMebibyteOfTextIsTheLimit) {
  auto custom = [](std::size_t size) {
    return CustomEventContainer{"e", {{"k", std::string(size, 'x')}}}.asDictionary();
  };
  // Beside it there are the other keys and texts, and two dictionaries.
  const std::size_t rest = std::string("typecustomeventepropertiesk").size() + 2;
  EXPECT_TRUE(custom((1U << 20) - rest));
  EXPECT_FALSE(custom((1U << 20) - rest + 1));
}

TEST_F(ContainersTest, ManyProductsInARowAreNoNesting) {
  OrderCompletedProperties order{.products = {2000, OrderCompletedProduct{.id = "42"}}};
  EXPECT_TRUE(OrderCompletedContainer(order, analytics_).asDictionary());
}

// As many levels as can be written and read back; beyond them there is one line.
TEST_F(ContainersTest, NestingEndsWhereJSONDoes) {
  Value nested = 1;
  Value empty = List{};
  for (int levels = 1; levels < 530; ++levels) {
    nested = levels % 2 == 0 ? Value(List{std::move(nested)})
                             : Value(Dictionary{{"k", std::move(nested)}});
    if (levels > 1) empty = List{std::move(empty)};
    if (levels < 500) continue;
    for (const auto* value : {&nested, &empty}) {
      Dictionary properties{{"k", *value}};
      bool isHeld = isHeldByJSON({{"type", "custom"}, {"event", "e"}, {"properties", properties}});
      EXPECT_EQ(isHeld, levels + 2 <= 512) << levels;
      auto before = log_->lines().size();
      EXPECT_EQ((CustomEventContainer{"e", properties}.asDictionary().has_value()), isHeld);
      EXPECT_EQ(log_->lines().size() - before, isHeld ? 0U : 1U);
    }
  }
  EXPECT_EQ(log_->lines().back(), "error: Could not log event - it is nested too deeply.");
}

}  // namespace
}  // namespace quenwick
