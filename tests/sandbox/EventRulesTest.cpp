#include <algorithm>
#include <boost/json.hpp>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "tests/sandbox/BehaviorFixture.h"

namespace json = boost::json;

namespace quenwick::sandbox {
namespace {

/// An event, and how it must begin to be refused: "field: reason". Empty where it is accepted.
struct Verdict {
  std::string event;
  std::string refusal;
};

class EventRulesTest : public BehaviorFixture {
 protected:
  void expect(const std::vector<Verdict>& verdicts) {
    start(kScenario);
    const std::string user = credential();
    for (const auto& [event, refusal] : verdicts) {
      const std::string message = refusal.empty() ? "accepted" : refusal;
      const auto answer = post({.body = event, .user = user});
      EXPECT_TRUE(answer.starts_with(R"({"message":")" + message) &&
                  answer.ends_with(refusal.empty() ? " 200" : " 422"))
          << answer << ", not " << message << ", to " << event;
    }
    const auto accepted = std::ranges::count(verdicts, "", &Verdict::refusal);
    EXPECT_EQ(count(sandbox_->events(), "request_id"), accepted);
    EXPECT_EQ(count(sandbox_->refusals(), R"("of":"events","status":422,"field":")"),
              std::ssize(verdicts) - accepted);
  }
};

/// A kind of event.
struct Kind {
  std::string sample;
  std::set<std::string> optional;  // fields that may be missing
  std::string open;                // the object that may hold anything
};

/// Adds the places below the one given, as JSON pointers; what lies in the open object has none.
void addPlaces(const json::value& value, const std::string& at, const std::string& open,
               std::vector<std::string>& places) {
  const auto add = [&](const std::string& key, const json::value& member) {
    places.push_back(at + "/" + key);
    addPlaces(member, at + "/" + key, open, places);
  };
  if (value.is_object() && at != open) {
    for (const auto& [key, member] : value.get_object()) add(key, member);
  } else if (value.is_array()) {
    std::size_t index = 0;
    for (const auto& element : value.get_array()) add(std::to_string(index++), element);
  }
}

/// "/a/0/b" as refusals have it: "a[0].b".
std::string nameOf(const std::string& place) {
  const auto bracketed = std::regex_replace(place, std::regex("/([0-9]+)"), "[$1]");
  const auto dotted = std::regex_replace(bracketed, std::regex("/"), ".");
  return dotted.substr(1);
}

std::string kindOf(const json::value& value) {
  if (value.is_object()) return "must be an object";
  if (value.is_array()) return "must be a list";
  return value.is_string() ? "must be a text" : "must be a whole number";
}

/// The event with each of its values in turn of another kind or missing, or with a key too many.
std::vector<Verdict> variantsOf(const Kind& kind) {
  const json::value event = json::parse(dated(kind.sample));
  std::vector<std::string> places;
  addPlaces(event, "", kind.open, places);
  std::vector<Verdict> verdicts;
  for (const auto& place : places) {
    const auto name = nameOf(place);
    const auto& held = event.at_pointer(place);
    const auto end = place.rfind('/');
    const auto add = [&](const auto& change, const std::string& refusal) {
      json::value changed = event;
      change(changed.at_pointer(place), changed.at_pointer(place.substr(0, end)));
      verdicts.push_back({json::serialize(changed), refusal});
    };
    add([](auto& value, auto&) { value = nullptr; }, name + ": " + kindOf(held));
    add([](auto& value, auto&) { value.is_string() ? value = 1 : value = "1"; },
        name + ": " + kindOf(held));
    if (held.is_object()) {
      add([](auto& value, auto&) { value.get_object()["x"] = 1; },
          place == kind.open ? "" : name + ".x: unknown key");
    }
    if (name.ends_with(']')) continue;
    add([&](auto&, auto& parent) { parent.get_object().erase(place.substr(end + 1)); },
        kind.optional.contains(name) ? "" : name + ": is missing");
  }
  return verdicts;
}

TEST_F(EventRulesTest, EveryFieldIsOfItsKindAndThereWhereItIsNeededAndThereIsNoOther) {
  const std::string category = "properties.categories[1].";
  const std::string line = "properties.products[0].";
  const std::vector<Kind> kinds = {
      {kProduct,
       {"properties.title", "properties.price", "properties.url", "properties.categories",
        category + "title", category + "url"},
       "/properties/meta"},
      {kSearch, {"properties.url"}, "none"},
      {kCategory, {"properties.title", "properties.url"}, "none"},
      {kOrder,
       {"context.campaign.rules_pic_key", "properties.id", "properties.revenue", line + "title",
        line + "url", line + "price", line + "quantity"},
       "none"},
      {kCustom, {}, "/properties"},
      {kIdentify, {}, "none"}};
  for (const auto& kind : kinds) expect(variantsOf(kind));
}

TEST_F(EventRulesTest, AValueThatBreaksARuleIsRefusedNamingTheField) {
  struct Case {
    std::string event, from, to, refusal;
  };
  const std::vector<Case> cases = {
      {kProduct, R"("track")", R"("page")", "type: must be"},
      {kProduct, "product_viewed", "product_bought", "event: is no event"},
      {kProduct, R"("a-1")", R"("")", "anonymous_id: must not be empty"},
      {kProduct, "Europe/Berlin", "Europe/Atlantis", "timezone: is no name"},
      {kProduct, "Europe/Berlin", "../zoneinfo/UTC", "timezone: is no name"},
      {kProduct, "NOW", "NOW.0", "timestamp: must be a whole number"},
      {kProduct, "NOW", "NOW000", "timestamp: is too far"},
      {kProduct, "NOW", "-9223372036854775000", "timestamp: is too far"},
      {kProduct, "NOW", secondsFromNow(-3700), "timestamp: is too far"},
      {kProduct, "NOW", secondsFromNow(3700), "timestamp: is too far"},
      {kProduct, "NOW", replaced(secondsFromNow(0) + "!", "000!", "500"),
       "timestamp: must be a whole second"},
      {kProduct, R"("sdk")", R"("web")", "channel.app.name: must be"},
      {kProduct, R"("event")", R"("type":"custom","event")", "type: stands twice"},
      {kProduct, R"("id":"42")", R"("id":"1","id":"42")", "id: stands twice"},
      {kProduct, R"("event")", R"("context":{},"event")", "context: unknown key"},
      {kCustom, R"("event")", R"("name":"wished","event")", "name: unknown key"},
      {kOrder, R"("event")", R"("library":1,"event")", "library: unknown key"},
      {kProduct, "https://shop.example/42", "shop 42", "properties.url: is no URL"},
      {kProduct, "https://shop.example/42", "", "properties.url: is no URL"},
      {kCategory, R"("/c/7")", R"("c\n7")", "properties.url: is no URL"},
      {replaced(kProduct, "viewed", "added"), R"("id":"42",)", "", "properties.id: is missing"},
      {replaced(kProduct, "viewed", "removed"), R"("id":"42",)", "", "properties.id: is missing"},
      {kOrder, R"({"id":"42","title":"Boots","url":"/42","price":"3.50","quantity":2})", "",
       "properties.products: must not be empty"},
      {kOrder, R"("quantity":2)", R"("quantity":2.0)",
       "properties.products[0].quantity: must be a whole number"},
      {kIdentify, R"("UTC")", R"("UTC","channel":{"app":{"name":"sdk"}})", "channel: unknown key"},
      {kIdentify, R"("UTC")", R"("UTC","event":"identify")", "event: unknown key"},
      {kSearch, R"("query")", R"("id":"1","query")", "properties.id: unknown key"},
      {kCategory, R"("id")", R"("meta":{},"id")", "properties.meta: unknown key"},
      {kOrder, R"("title":"Boots")", R"("meta":{})", "properties.products[0].meta: unknown key"},
      {kIdentify, kIdentify, "[]", "body: must be an object"},
      {kIdentify, "NOW}", "NOW", "body: line 1"},
      {kIdentify, "alice", "\xFF", "body: line 1"}};
  std::vector<Verdict> verdicts;
  for (const auto& [event, from, to, refusal] : cases) {
    verdicts.push_back({replaced(event, from, to), refusal});
  }
  expect(verdicts);
}

}  // namespace
}  // namespace quenwick::sandbox
