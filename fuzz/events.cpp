// The name of a record, behind a blank an order's rules key, and a host's dictionary for it as
// JSON. In its texts "<nan>" stands for a number that is none, "<inf>" for an infinite one,
// "<bytes>" for bytes that are no text.

#include <cmath>
#include <cstdio>
#include <limits>

#include "fuzz/Target.h"
#include "quenwick/API/Models/CustomEventContainer.h"
#include "quenwick/API/Models/OrderCompletedContainer.h"
#include "quenwick/API/Models/OrderCompletedProperties.h"
#include "quenwick/API/Models/TrackContainer.h"
#include "quenwick/events/Footprint.h"
#include "quenwick/platform/JSONSerialization.h"
#include "tests/support/SilentLog.h"

namespace quenwick::fuzz {
namespace {

using platform::Dictionary;
using platform::JSONSerialization;
using platform::List;
using platform::Value;

constexpr std::size_t kMebibyte = 1U << 20;

/// The dictionary with what JSON cannot say put in its place.
Value unsound(const Value& value) {
  if (const auto* text = value.as<std::string>()) {
    if (*text == "<nan>") return std::nan("");
    if (*text == "<inf>") return -std::numeric_limits<double>::infinity();
    if (*text == "<bytes>") return "\xc3(";
  }
  if (const auto* list = value.as<List>()) {
    List made;
    for (const auto& each : *list) made.push_back(unsound(each));
    return made;
  }
  if (const auto* object = value.as<Dictionary>()) {
    Dictionary made;
    for (const auto& [key, each] : *object)
      made.set(key == "<bytes>" ? "\xc3(" : key, unsound(each));
    return made;
  }
  return value;
}

std::optional<std::string> written(const Dictionary& dictionary) {
  try {
    return JSONSerialization::text(dictionary);
  } catch (const platform::JSONError&) {
    return std::nullopt;
  }
}

/// What is handed to the transport can be written, reads back as it is, and is not too large.
void checkPayload(const Dictionary& payload) {
  auto text = written(payload);
  holds(text.has_value(), "a payload can be written as JSON");
  holds(JSONSerialization::parse(*text) == Value(payload), "a payload reads back as it is", *text);
}

/// A number is a price of two decimals, as C's own printing makes them of a double.
void checkPrice(const Dictionary& given, std::string_view key, const std::optional<Price>& taken) {
  const auto* value = given.find(key);
  if (!value || value->isNull()) {
    holds(!taken, "no price is made up");
  } else if (const auto* text = value->as<std::string>()) {
    holds(taken && taken->text() == *text, "a price in text stands as it is", *text);
  } else if (const auto* number = value->as<double>(); number && std::isfinite(*number)) {
    char line[400];
    std::snprintf(line, sizeof line, "%.2f", *number);
    holds(taken && taken->text() == line, "a price has two decimals", line);
  }
}

void checkPrices(const Dictionary& given, const ProductProperties& record) {
  checkPrice(given, "price", record.price);
}
void checkPrices(const Dictionary& given, const OrderCompletedProduct& record) {
  checkPrice(given, "price", record.price);
}
void checkPrices(const Dictionary& given, const OrderCompletedProperties& record) {
  checkPrice(given, "revenue", record.revenue);
  holds(!record.products.empty(), "an order has a product");
}
void checkPrices(const Dictionary&, const ProductCategory&) {}
void checkPrices(const Dictionary&, const ProductSearchedProperties&) {}

/// A record that is taken makes a dictionary that makes the same record.
template <class Record>
std::optional<Record> checkRecord(const Dictionary& given) {
  auto record = Record::from(given);
  if (!record) return std::nullopt;
  checkPrices(given, *record);
  if (auto dictionary = record->asDictionary()) {
    checkPayload(*dictionary);
    auto again = Record::from(*dictionary);
    holds(again && again->asDictionary() == dictionary, "a record's dictionary makes the record");
  }
  return record;
}

/// An event is refused where JSON cannot hold its fields, or they are too large, and nowhere else.
void checkEvent(const std::optional<Dictionary>& payload, const Dictionary& fields) {
  auto text = written(fields);
  if (text && text->size() < kMebibyte)
    holds(payload.has_value(), "what JSON holds is sent", *text);
  if (!text) holds(!payload, "what JSON cannot hold is refused");
  if (!payload) return;
  checkPayload(*payload);
  holds(*payload == fields, "an event holds its fields and no others", *text);
}

template <class Container, class Record>
void checkTracked(std::string_view event, const Dictionary& given) {
  auto record = checkRecord<Record>(given);
  if (!record) return;
  holds(footprint(*record) > 0, "a record takes memory");
  auto own = record->asDictionary();
  auto payload = Container{*record}.asDictionary();
  // The event's own fields count as well.
  holds(own || !payload, "an event holds no more than its record may");
  if (own) checkEvent(payload, {{"type", "track"}, {"event", event}, {"properties", *own}});
}

void checkOrder(const Dictionary& given, const std::optional<std::string>& rulesKey) {
  auto record = checkRecord<OrderCompletedProperties>(given);
  if (!record) return;
  holds(footprint(*record) > 0, "an order takes memory");
  auto own = record->asDictionary();
  auto payload =
      OrderCompletedContainer(*record, {.campaign = {.rulesPicKey = rulesKey}}).asDictionary();
  holds(own || !payload, "an event holds no more than its order may");
  Dictionary campaign;
  if (rulesKey) campaign.set("rules_pic_key", *rulesKey);
  if (own) {
    checkEvent(payload, {{"type", "track"},
                         {"event", "order_completed"},
                         {"context", Dictionary{{"campaign", campaign}}},
                         {"properties", *own}});
  }
}

void checkCustom(const Dictionary& properties) {
  holds(properties.empty() || footprint(properties) > 0, "what is not empty takes memory");
  checkEvent(CustomEventContainer{"e", properties}.asDictionary(),
             {{"type", "custom"}, {"event", "e"}, {"properties", properties}});
}

void check(std::string_view head, const Dictionary& given) {
  auto name = head.substr(0, head.find(' '));
  std::optional<std::string> rulesKey;
  if (name.size() < head.size()) rulesKey = head.substr(name.size() + 1);
  if (name == "product") {
    checkTracked<ProductAddedContainer, ProductProperties>("product_added", given);
  }
  if (name == "category") {
    checkTracked<CategoryViewedContainer, ProductCategory>("category_viewed", given);
  }
  if (name == "search") {
    checkTracked<ProductSearchedContainer, ProductSearchedProperties>("product_searched", given);
  }
  if (name == "line") checkRecord<OrderCompletedProduct>(given);
  if (name == "order") checkOrder(given, rulesKey);
  checkCustom(given);
}

}  // namespace
}  // namespace quenwick::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quenwick;
  [[maybe_unused]] static const bool isSilent = tests::SilentLog::install();
  fuzz::Input input(data, size);
  const auto name = input.line();
  try {
    auto value = fuzz::unsound(platform::JSONSerialization::parse(input.rest()));
    if (const auto* given = value.as<platform::Dictionary>()) fuzz::check(name, *given);
  } catch (const platform::JSONError&) {
    return 0;
  }
  return 0;
}
