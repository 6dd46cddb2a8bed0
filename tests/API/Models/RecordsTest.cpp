#include <gtest/gtest.h>

#include <limits>

#include "quenwick/API/Models/OrderCompletedProperties.h"
#include "quenwick/API/Models/ProductProperties.h"
#include "quenwick/API/Models/ProductSearchedProperties.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/JSONSerialization.h"
#include "tests/support/RecordingLog.h"

namespace quenwick {
namespace {

using platform::Dictionary;
using platform::JSONSerialization;
using platform::List;
using platform::URL;
using platform::Value;

const std::string kNoID =
    "error: Could not log event - id is missing. Must be either a String or Int.";
const std::string kNoProduct = "error: Could not log event - at least 1 product must exist.";
const std::string kNoQuery = "error: Could not log event - query is missing. Must be a String.";
const std::string kURLNotUTF8 = "error: Could not log event - url holds text that is not UTF-8.";

class RecordsTest : public testing::Test {
 protected:
  /// The lines written since the last call.
  std::vector<std::string> newLines() {
    auto all = log_->lines();
    std::vector<std::string> lines(all.begin() + seen_, all.end());
    seen_ = static_cast<std::ptrdiff_t>(all.size());
    return lines;
  }

  std::shared_ptr<tests::RecordingLog> log_ = tests::RecordingLog::install();
  std::ptrdiff_t seen_ = 0;
};

using Lines = std::vector<std::string>;

/// A record read from one JSON text, as the JSON text of its dictionary; "none" where it is
/// refused.
template <class Record>
std::string through(const char* json) {
  auto record = Record::from(*JSONSerialization::parse(json).as<Dictionary>());
  if (!record) return "none";
  return JSONSerialization::text(*record->asDictionary());
}

TEST_F(RecordsTest, AProductIsReadFromADictionary) {
  const std::pair<const char*, const char*> kProducts[] = {
      {R"({"id": "a"})", R"({"id":"a","meta":{}})"},
      {R"({"id": 42})", R"({"id":"42","meta":{}})"},
      {R"({"id": -9223372036854775808})", R"({"id":"-9223372036854775808","meta":{}})"},
      {R"({"id": 18446744073709551615})", R"({"id":"18446744073709551615","meta":{}})"},
      {R"({"id": ""})", R"({"id":"","meta":{}})"},
      {R"({"price": 3.14159, "id": "a"})", R"({"id":"a","price":"3.14","meta":{}})"},
      {R"({"id": "a", "price": 3})", R"({"id":"a","price":"3.00","meta":{}})"},
      {R"({"id": "a", "price": "3.1"})", R"({"id":"a","price":"3.1","meta":{}})"},
      {R"({"id": "a", "price": 18446744073709551615})",
       R"({"id":"a","price":"18446744073709551615.00","meta":{}})"},
      {R"({"id": "a", "url": "https://shop.example/%7Ex?q=ü#f"})",
       R"({"id":"a","url":"https://shop.example/%7Ex?q=ü#f","meta":{}})"},
      {R"({"id": "a", "url": "no url"})", R"({"id":"a","meta":{}})"},
      {R"({"id": "a", "title": "T", "colour": "red"})", R"({"id":"a","title":"T","meta":{}})"},
      {R"({"id": "a", "categories": []})", R"({"id":"a","categories":[],"meta":{}})"},
      {R"({"id": "a", "categories": [{"id": 1, "title": "T", "url": "/t"}, {"id": "2"}]})",
       R"({"id":"a","categories":[{"id":"1","title":"T","url":"/t"},{"id":"2"}],"meta":{}})"},
      {R"({"id": "a", "meta": {"n": [9007199254740993, -1.5, null, {"id": true}]}})",
       R"({"id":"a","meta":{"n":[9007199254740993,-1.5,null,{"id":true}]}})"},
  };
  for (const auto& [given, taken] : kProducts) {
    EXPECT_EQ(through<ProductProperties>(given), taken) << given;
  }
  EXPECT_EQ(newLines(), Lines{});
}

TEST_F(RecordsTest, AnOptionalFieldOfAWrongKindIsLeftOut) {
  const Value kKinds[] = {
      nullptr, true, 5, 5U, 1.5, "text with blanks", List{1}, Dictionary{{"k", 1}}};
  struct {
    const char* key;
    std::vector<std::size_t> right;  // indices of the kinds that are taken
  } const kFields[] = {{"title", {5}},           {"price", {2, 3, 4, 5}}, {"url", {}},
                       {"categories", {6}},      {"meta", {7}},           {"quantity", {2, 3}},
                       {"revenue", {2, 3, 4, 5}}};
  for (const auto& [key, right] : kFields) {
    for (std::size_t kind = 0; kind < std::size(kKinds); ++kind) {
      bool isTaken = std::ranges::find(right, kind) != right.end();
      Dictionary dictionary{{"id", "a"}, {"products", List{Dictionary{{"id", "b"}}}}};
      dictionary.set(key, kKinds[kind]);
      Dictionary bare{{"id", "a"}, {"products", List{Dictionary{{"id", "b"}}}}};
      auto product = ProductProperties::from(dictionary);
      auto line = OrderCompletedProduct::from(dictionary);
      auto order = OrderCompletedProperties::from(dictionary);
      ASSERT_TRUE(product && line && order) << key << kind;
      bool isChanged = product != ProductProperties::from(bare) ||
                       line != OrderCompletedProduct::from(bare) ||
                       order != OrderCompletedProperties::from(bare);
      EXPECT_EQ(isChanged, isTaken) << key << " of kind " << kind;
    }
  }
  EXPECT_EQ(log_->count(kNoID), 1) << "an entry of the list of categories is no category";
}

TEST_F(RecordsTest, ARecordWithoutItsRequiredFieldIsRefusedWithOneLine) {
  for (const auto* id : {"{}", R"({"id": null})", R"({"id": true})", R"({"id": 1.0})",
                         R"({"id": ["a"]})", R"({"id": {"id": "a"}})", R"({"ID": "a"})"}) {
    EXPECT_EQ(through<ProductProperties>(id), "none");
    EXPECT_EQ(through<ProductCategory>(id), "none");
    EXPECT_EQ(through<OrderCompletedProduct>(id), "none");
    EXPECT_EQ(newLines(), (Lines{kNoID, kNoID, kNoID})) << id;
  }
  for (const auto* query : {"{}", R"({"query": 5})", R"({"query": null})", R"({"query": ["a"]})"}) {
    EXPECT_EQ(through<ProductSearchedProperties>(query), "none");
    EXPECT_EQ(newLines(), Lines{kNoQuery}) << query;
  }
  EXPECT_EQ(through<ProductSearchedProperties>(R"({"query": "", "url": "/s?q="})"),
            R"({"query":"","url":"/s?q="})");
  EXPECT_EQ(newLines(), Lines{});
}

TEST_F(RecordsTest, AnOrderNeedsAProduct) {
  struct {
    const char* given;
    const char* taken;
    Lines lines;
  } const kOrders[] = {
      {"{}", "none", {kNoProduct}},
      {R"({"products": []})", "none", {kNoProduct}},
      {R"({"products": {"id": "a"}})", "none", {kNoProduct}},
      {R"({"products": [{}, "a", null]})", "none", {kNoID, kNoID, kNoID, kNoProduct}},
      {R"({"products": [{"id": 1}]})", R"({"products":[{"id":"1"}]})", {}},
      {R"({"products": [{"title": "T"}, {"id": "b"}]})", R"({"products":[{"id":"b"}]})", {kNoID}},
      {R"({"id": 7, "revenue": 10, "products": [
           {"id": "a", "title": "T", "url": "/a", "price": 9.999, "quantity": 9007199254740993},
           {"id": "b", "price": "1", "quantity": -1},
           {"id": "c", "quantity": 18446744073709551615}]})",
       R"({"id":"7","revenue":"10.00","products":[)"
       R"({"id":"a","title":"T","url":"/a","price":"10.00","quantity":9007199254740993},)"
       R"({"id":"b","price":"1","quantity":-1},{"id":"c"}]})",
       {}},
      {R"({"id": true, "revenue": null, "products": [{"id": "a"}]})",
       R"({"products":[{"id":"a"}]})",
       {}},
  };
  for (const auto& [given, taken, lines] : kOrders) {
    EXPECT_EQ(through<OrderCompletedProperties>(given), taken) << given;
    EXPECT_EQ(newLines(), lines) << given;
  }
}

TEST_F(RecordsTest, ACategoryWithoutAnIDIsLeftOutWithItsLine) {
  EXPECT_EQ(
      through<ProductProperties>(R"({"id": "a", "categories": [{"id": 1}, {}, 5, {"id": 2}]})"),
      R"({"id":"a","categories":[{"id":"1"},{"id":"2"}],"meta":{}})");
  EXPECT_EQ(newLines(), (Lines{kNoID, kNoID}));
}

TEST_F(RecordsTest, AURLThatIsNotUTF8RefusesTheWholeRecord) {
  const Dictionary bad{{"id", "a"}, {"query", "q"}, {"url", "https://a.example/\xff"}};
  EXPECT_FALSE(ProductProperties::from(bad));
  EXPECT_FALSE(ProductSearchedProperties::from(bad));
  EXPECT_FALSE(ProductProperties::from({{"id", "b"}, {"categories", List{bad}}}));
  EXPECT_FALSE(OrderCompletedProperties::from({{"products", List{Dictionary{{"id", "b"}}, bad}}}));
  EXPECT_EQ(newLines(), Lines(4, kURLNotUTF8));
}

TEST_F(RecordsTest, TextsAndMetaAreMovedAllTheWay) {
  Dictionary dictionary{{"id", std::string(100, 'i')},
                        {"title", std::string(100, 't')},
                        {"price", std::string(100, 'p')},
                        {"categories", List{Dictionary{{"id", std::string(100, 'c')}}}},
                        {"meta", Dictionary{{"k", List{std::string(100, 'm')}}}}};
  auto places = [](const Dictionary& in) {
    const auto& category = in.find("categories")->as<List>()->front();
    const auto& meta = in.find("meta")->as<Dictionary>()->find("k")->as<List>()->front();
    return std::vector<const void*>{
        in.find("id")->as<std::string>()->data(), in.find("title")->as<std::string>()->data(),
        in.find("price")->as<std::string>()->data(),
        category.as<Dictionary>()->find("id")->as<std::string>()->data(),
        meta.as<std::string>()->data()};
  };
  auto before = places(dictionary);
  auto product = ProductProperties::from(std::move(dictionary));
  auto kept = product->asDictionary();
  auto moved = std::move(*product).asDictionary();
  EXPECT_EQ(places(*moved), before);
  EXPECT_EQ(kept, moved);

  const OrderCompletedProduct line{.id = "42", .quantity = 2};
  EXPECT_EQ(JSONSerialization::text(*line.asDictionary()), R"({"id":"42","quantity":2})");
  EXPECT_EQ(OrderCompletedProduct(line).asDictionary(), line.asDictionary());
}

TEST_F(RecordsTest, LinesAreOfTheBehaviourCategory) {
  SharedLogger::setEnabledLogTypes(QWLogType::deeplink);
  EXPECT_FALSE(ProductProperties::from({}));
  EXPECT_FALSE(ProductCategory{.id = "\xff"}.asDictionary());
  EXPECT_EQ(newLines(), Lines{});
  SharedLogger::setEnabledLogTypes(QWLogType::behaviorEvent);
  EXPECT_FALSE(ProductProperties::from({}));
  EXPECT_EQ(newLines(), Lines{kNoID});
}

}  // namespace
}  // namespace quenwick
