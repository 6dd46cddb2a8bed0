#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/sandbox/SandboxFixture.h"

namespace quenwick::sandbox {
namespace {

namespace fs = std::filesystem;

constexpr const char* kService = "https://api.shop.example/behavioral_verification";
constexpr const char* kEvents = "https://events.shop.example/v1/events";
constexpr const char* kScenario = R"({"behavior": {"keys": [
  {"key": "demo-key"}, {"key": "shop-key", "bundleIdentifiers": ["com.example.shop"]}]}})";

const std::string kVerification = R"({"bundle_identifier":"com.example.any","api_key":"demo-key"})";

/// What events of a type have in common; NOW stands for the time.
const std::string kCommon =
    R"("user_id":"alice","anonymous_id":"a-1","timezone":"Europe/Berlin","timestamp":NOW,)"
    R"("channel":{"app":{"name":"sdk"}}})";
const std::string kProduct =
    R"({"type":"track","event":"product_viewed","properties":{"id":"42","title":"Boots",)"
    R"("price":"3.50","url":"https://shop.example/42","categories":[{"id":"1"},{"id":"7",)"
    R"("title":"Shoes","url":"/c/7"}],"meta":{"sizes":[44,null,18446744073709551615]}},)" +
    kCommon;
const std::string kSearch =
    R"({"type":"track","event":"product_searched","properties":{"query":"boots","url":"/s"},)" +
    kCommon;
const std::string kCategory =
    R"({"type":"track","event":"category_viewed","properties":{"id":"7","title":"Shoes",)"
    R"("url":"/c/7"},)" +
    kCommon;
const std::string kOrder =
    R"({"type":"track","event":"order_completed","context":{"campaign":{"rules_pic_key":"beef"}},)"
    R"("properties":{"id":"o-1","revenue":"7.00","products":[{"id":"42","title":"Boots",)"
    R"("url":"/42","price":"3.50","quantity":2}]},)" +
    kCommon;
const std::string kOrderLines =
    R"(,"products":[{"id":"42","title":"Boots","url":"/42","price":"3.50","quantity":2}])";
const std::string kCustom =
    R"({"type":"custom","event":"wished","properties":{"a":[{"b":1.5}],"type":null},)" + kCommon;
const std::string kIdentify =
    R"({"type":"identify","user_id":"alice","anonymous_id":"a-1","timezone":"UTC","timestamp":NOW})";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const auto at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from << " in " << text;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

std::string secondsFromNow(long long offset) {
  using namespace std::chrono;
  const auto now = system_clock::now().time_since_epoch();
  return std::to_string(duration_cast<seconds>(now).count() + offset) + "000";
}

std::string inQuotes(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text)
    quoted += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
  return quoted + "\"";
}

std::size_t count(const std::string& text, const std::string& part) {
  std::size_t result = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++result;
  return result;
}

/// The text that stands under a key of a JSON object.
std::string valueOf(const std::string& json, const std::string& key) {
  const std::string prefix = "\"" + key + "\":\"";
  const auto at = json.find(prefix);
  if (at == std::string::npos) return "none";
  return json.substr(at + prefix.size(), json.find('"', at + prefix.size()) - at - prefix.size());
}

/// A request as curl is asked for it.
struct Request {
  std::string url = kEvents;
  std::string body = {};
  std::string user = {};
  std::string type = "application/json";
  std::string method = "POST";
};

struct Exchange {
  Request request;
  std::string answer;
};

class BehaviorTest : public SandboxFixture {
 protected:
  /// Makes all requests with one run of curl; an answer is "body status".
  std::vector<std::string> post(const std::vector<Request>& requests) {
    const fs::path config = state_ / "curl";
    std::ofstream file(config);
    for (const Request& each : requests) {
      if (&each != &requests.front()) file << "next\n";
      file << "silent\nmax-time = 30\ncacert = " << sandbox_->certificateAuthority()
           << "\nconnect-to = \":443:127.0.0.1:" << sandbox_->port()
           << "\"\nurl = " << inQuotes(each.url) << "\nrequest = " << each.method
           << "\nwrite-out = \" %{http_code}\\n\"\nheader = \"Content-Type:"
           << (each.type.empty() ? "" : " ") << replacedQuotes(each.type) << "\"\n";
      if (!each.user.empty()) file << "user = " << inQuotes(each.user) << "\n";
      const std::string now = secondsFromNow(0);
      const bool isDated = each.body.find("NOW") != std::string::npos;
      file << "data-binary = " << inQuotes(isDated ? replaced(each.body, "NOW", now) : each.body)
           << "\n";
    }
    file.close();
    std::istringstream output(run("curl --config " + config.string()).output);
    std::vector<std::string> answers;
    for (std::string line; std::getline(output, line);) answers.push_back(line);
    return answers;
  }

  std::string post(const Request& request) {
    const auto answers = post(std::vector{request});
    return answers.size() == 1 ? answers.front() : "no answer";
  }

  void expectAnswers(const std::vector<Exchange>& exchanges) {
    std::vector<Request> requests;
    requests.reserve(exchanges.size());
    for (const Exchange& each : exchanges) requests.push_back(each.request);
    const auto answers = post(requests);
    ASSERT_GE(answers.size(), exchanges.size());
    for (std::size_t i = 0; i < exchanges.size(); ++i) EXPECT_EQ(answers[i], exchanges[i].answer);
  }

  /// The credential that the handshake issues for a key, as "identifier:token".
  std::string credential(const std::string& key = "demo-key") {
    const std::string answer =
        post({.url = kService, .body = replaced(kVerification, "demo-key", key)});
    return valueOf(answer, "behavioral_endpoint_api_token_identifier") + ":" +
           valueOf(answer, "behavioral_endpoint_api_token");
  }

  /// What another sandbox issues for the same key.
  std::string foreignCredential() {
    const tests::TemporaryDirectory folder;
    auto own = std::exchange(sandbox_, std::make_unique<Sandbox>(
                                           Options{.state = folder.path(), .scenario = kScenario}));
    std::string issued = credential();
    sandbox_ = std::move(own);
    return issued;
  }

 private:
  static std::string replacedQuotes(const std::string& text) {
    const std::string quoted = inQuotes(text);
    return quoted.substr(1, quoted.size() - 2);
  }
};

TEST_F(BehaviorTest, TheHandshakeRefusesAllButAPostOfTwoKnownTexts) {
  const auto body = [](const std::string& from, const std::string& to) {
    return Request{.url = kService, .body = replaced(kVerification, from, to)};
  };
  const std::vector<Exchange> cases = {
      {body("demo-key\"", "demo-key\",\"x\":1"), R"({"message":"x: unknown key"} 422)"},
      {body("\"api_key\"", "\"api_kez\""), R"({"message":"api_kez: unknown key"} 422)"},
      {body(R"(,"api_key":"demo-key")", ""), R"({"message":"api_key: is missing"} 422)"},
      {body(R"("bundle_identifier":"com.example.any",)", ""),
       R"({"message":"bundle_identifier: is missing"} 422)"},
      {body("\"demo-key\"", "7"), R"({"message":"api_key: must be a text"} 422)"},
      {body("\"com.example.any\"", "null"),
       R"({"message":"bundle_identifier: must be a text"} 422)"},
      {body("com.example.any", ""), R"({"message":"bundle_identifier: must not be empty"} 422)"},
      {body("demo-key", "demo-kez"), R"({"error":"api_key: is not known"} 403)"},
      {body("demo-key", "shop-key"), R"({"error":"bundle_identifier: has another API key"} 403)"},
      {{.url = kService, .body = "[]"}, R"({"message":"body: must be an object"} 422)"},
      {{.url = kService, .body = "{\"api_key\":"},
       R"({"message":"body: line 1, column 12: incomplete JSON"} 422)"},
      {{.url = kService, .body = kVerification, .method = "PUT"},
       R"({"message":"method: must be POST"} 422)"},
      {{.url = kService, .body = kVerification, .method = "GET"},
       R"({"message":"method: must be POST"} 422)"},
      {{.url = kService, .body = kVerification, .type = "application/x-www-form-urlencoded"},
       R"({"message":"Content-Type: must be application/json"} 422)"},
      {{.url = kService, .body = kVerification, .type = ""},
       R"({"message":"Content-Type: must be application/json"} 422)"},
      {{.url = std::string(kService) + "?a=b", .body = kVerification},
       R"({"message":"query: must be empty"} 422)"},
      {{.url = std::string(kService) + "/", .body = kVerification},
       "Nothing is served at api.shop.example/behavioral_verification/"}};
  start(kScenario);
  expectAnswers(cases);
  EXPECT_EQ(count(sandbox_->refusals(), R"("of":"verification")"), cases.size() - 1);
}

TEST_F(BehaviorTest, TheHandshakeAnswersTheEndpointAndACredentialForEachKey) {
  start(kScenario);
  const auto answers =
      post({{.url = kService, .body = kVerification, .type = "Application/JSON; charset=\"UTF-8\""},
            {.url = kService,
             .body = R"({"api_key":"shop-key","bundle_identifier":"com.example.shop"})"}});
  ASSERT_EQ(answers.size(), 2U);
  for (const std::string& answer : answers) {
    EXPECT_TRUE(answer.starts_with(R"({"data":{)") && answer.ends_with("}} 200")) << answer;
    EXPECT_EQ(valueOf(answer, "behavioral_endpoint_url"), kEvents);
  }
  for (const char* key :
       {"behavioral_endpoint_api_token", "behavioral_endpoint_api_token_identifier"}) {
    EXPECT_GE(valueOf(answers[0], key).size(), 16U);
    EXPECT_NE(valueOf(answers[0], key), valueOf(answers[1], key));
  }
}

TEST_F(BehaviorTest, EventsAsAClientShouldSendThemAreAcceptedAndKeptToTheLetter) {
  const std::vector<std::string> bodies = {
      kProduct,
      replaced(kProduct, "product_viewed", "product_added"),
      replaced(kProduct, "product_viewed", "product_removed"),
      replaced(kProduct,
               R"(,"title":"Boots","price":"3.50","url":"https://shop.example/42",)"
               R"("categories":[{"id":"1"},{"id":"7","title":"Shoes","url":"/c/7"}])",
               ""),
      kSearch,
      replaced(kSearch, R"(,"url":"/s")", ""),
      kCategory,
      kOrder,
      replaced(kOrder, R"("rules_pic_key":"beef")", ""),
      replaced(kOrder, R"("id":"o-1","revenue":"7.00",)", ""),
      replaced(kOrder, R"(,"title":"Boots","url":"/42","price":"3.50","quantity":2)", ""),
      kCustom,
      replaced(kCustom, "\"alice\"", "\"\""),
      replaced(kCustom, "Europe/Berlin", "Etc/GMT+5"),
      kIdentify};
  start(kScenario);
  const std::string user = credential();
  std::vector<Request> requests;
  requests.reserve(bodies.size());
  for (const std::string& body : bodies) {
    requests.push_back({.body = replaced(body, "NOW", secondsFromNow(0)), .user = user});
  }
  requests.back().type = "application/json;charset=utf-8";

  std::set<std::string> identifiers;
  const auto answers = post(requests);
  const std::string events = curl("https://events.shop.example/_sandbox/events").output;
  EXPECT_EQ(events, sandbox_->events());
  ASSERT_EQ(answers.size(), bodies.size());
  for (std::size_t i = 0, at = 0; i < bodies.size(); ++i) {
    EXPECT_TRUE(answers[i].ends_with("\"} 200")) << answers[i] << " to " << bodies[i];
    identifiers.insert(valueOf(answers[i], "request_id"));
    at = events.find("{\"request_id\":\"" + valueOf(answers[i], "request_id"), at);
    ASSERT_NE(at, std::string::npos) << answers[i];
    at = events.find("\"body\":" + requests[i].body + "}", at);
    ASSERT_NE(at, std::string::npos) << requests[i].body;
  }
  EXPECT_EQ(identifiers.size(), bodies.size());
  EXPECT_EQ(sandbox_->refusals(), R"({"refusals":[]})");

  EXPECT_EQ(curl("-X DELETE -w '%{http_code}' https://events.shop.example/_sandbox/events").output,
            "204");
  EXPECT_EQ(sandbox_->events(), R"({"events":[]})");
}

TEST_F(BehaviorTest, AnEventThatBreaksARuleIsRefusedNamingTheField) {
  struct Case {
    std::string event, from, to, field, reason;
  };
  const std::vector<Case> cases = {
      // The envelope, of which each field is needed.
      {kProduct, R"("type":"track",)", "", "type", "is missing"},
      {kProduct, R"("track")", R"("page")", "type", "must be"},
      {kProduct, R"("track")", "1", "type", "must be a text"},
      {kProduct, R"("event":"product_viewed",)", "", "event", "is missing"},
      {kProduct, "product_viewed", "product_bought", "event", "is no event"},
      {kProduct, R"("user_id":"alice",)", "", "user_id", "is missing"},
      {kProduct, R"("anonymous_id":"a-1",)", "", "anonymous_id", "is missing"},
      {kProduct, R"("a-1")", R"("")", "anonymous_id", "must not be empty"},
      {kProduct, R"("timezone":"Europe/Berlin",)", "", "timezone", "is missing"},
      {kProduct, "Europe/Berlin", "Europe/Atlantis", "timezone", "is no name"},
      {kProduct, "Europe/Berlin", "../zoneinfo/UTC", "timezone", "is no name"},
      {kProduct, R"(,"timestamp":NOW)", "", "timestamp", "is missing"},
      {kProduct, "NOW", "NOW.0", "timestamp", "must be a whole number"},
      {kProduct, "NOW", R"("NOW")", "timestamp", "must be a whole number"},
      {kProduct, "NOW", "NOW000", "timestamp", "is too far"},
      {kProduct, "NOW", "-9223372036854775000", "timestamp", "is too far"},
      {kProduct, "NOW", secondsFromNow(-3700), "timestamp", "is too far"},
      {kProduct, "NOW", secondsFromNow(3700), "timestamp", "is too far"},
      {kProduct, "NOW", replaced(secondsFromNow(0) + "!", "000!", "500"), "timestamp",
       "must be a whole second"},
      {kProduct, R"(,"channel":{"app":{"name":"sdk"}})", "", "channel", "is missing"},
      {kProduct, R"({"app":{"name":"sdk"}})", R"("sdk")", "channel", "must be an object"},
      {kProduct, R"({"app":{"name":"sdk"}})", "{}", "channel.app", "is missing"},
      {kProduct, R"({"name":"sdk"})", R"("sdk")", "channel.app", "must be an object"},
      {kProduct, R"({"name":"sdk"})", "{}", "channel.app.name", "is missing"},
      {kProduct, R"("sdk")", R"("web")", "channel.app.name", "must be"},
      {kProduct, R"("name":"sdk")", R"("name":"sdk","version":"1")", "channel.app.version",
       "unknown key"},
      {kProduct, R"("app")", R"("web":1,"app")", "channel.web", "unknown key"},
      {kProduct, R"("event")", R"("library":1,"event")", "library", "unknown key"},
      {kProduct, R"("event")", R"("type":"custom","event")", "type", "stands twice"},
      {kProduct, R"("id":"42")", R"("id":"1","id":"42")", "id", "stands twice"},
      {kProduct, R"("event")", R"("context":{},"event")", "context", "unknown key"},
      {kProduct, R"("properties")", R"("property")", "property", "unknown key"},
      {kSearch, R"("properties":{"query":"boots","url":"/s"},)", "", "properties", "is missing"},
      {kSearch, R"({"query":"boots","url":"/s"})", "[]", "properties", "must be an object"},
      // Products.
      {kProduct, R"("id":"42",)", "", "properties.id", "is missing"},
      {kProduct, R"("Boots")", "null", "properties.title", "must be a text"},
      {kProduct, "https://shop.example/42", "shop 42", "properties.url", "is no URL"},
      {kProduct, "https://shop.example/42", "", "properties.url", "is no URL"},
      {kProduct, R"([{"id":"1"},{"id":"7","title":"Shoes","url":"/c/7"}])", R"({"id":"1"})",
       "properties.categories", "must be a list"},
      {kProduct, R"({"id":"1"})", R"("1")", "properties.categories[0]", "must be an object"},
      {kProduct, R"({"id":"7",)", "{", "properties.categories[1].id", "is missing"},
      {kProduct, R"("/c/7")", R"("/c/7","top":1)", "properties.categories[1].top", "unknown key"},
      {kProduct, R"({"sizes":[44,null,18446744073709551615]})", "[]", "properties.meta",
       "must be an object"},
      {kProduct, R"(,"meta":{"sizes":[44,null,18446744073709551615]})", "", "properties.meta",
       "is missing"},
      {kProduct, R"("meta")", R"("color":"red","meta")", "properties.color", "unknown key"},
      {replaced(kProduct, "viewed", "added"), R"("id":"42",)", "", "properties.id", "is missing"},
      {replaced(kProduct, "viewed", "removed"), R"("id":"42",)", "", "properties.id", "is missing"},
      // Searches and categories.
      {kSearch, R"("query":"boots",)", "", "properties.query", "is missing"},
      {kSearch, R"("/s")", R"("/s boots")", "properties.url", "is no URL"},
      {kSearch, R"("query")", R"("id":"1","query")", "properties.id", "unknown key"},
      {kCategory, R"("id":"7",)", "", "properties.id", "is missing"},
      {kCategory, R"("/c/7")", R"("c\n7")", "properties.url", "is no URL"},
      {kCategory, R"("id")", R"("meta":{},"id")", "properties.meta", "unknown key"},
      // Orders.
      {kOrder, R"("context":{"campaign":{"rules_pic_key":"beef"}},)", "", "context", "is missing"},
      {kOrder, R"({"campaign":{"rules_pic_key":"beef"}})", "[]", "context", "must be an object"},
      {kOrder, R"("campaign":{)", R"("page":{},"campaign":{)", "context.page", "unknown key"},
      {kOrder, R"("campaign":{"rules_pic_key":"beef"})", "", "context.campaign", "is missing"},
      {kOrder, R"({"rules_pic_key":"beef"})", R"("beef")", "context.campaign", "must be an object"},
      {kOrder, R"("rules_pic_key")", R"("name":"spring","rules_pic_key")", "context.campaign.name",
       "unknown key"},
      {kOrder, R"("revenue")", R"("total")", "properties.total", "unknown key"},
      {kOrder, kOrderLines, "", "properties.products", "is missing"},
      {kOrder, kOrderLines, R"(,"products":{"id":"42"})", "properties.products", "must be a list"},
      {kOrder, kOrderLines, R"(,"products":[])", "properties.products", "must not be empty"},
      {kOrder, kOrderLines, R"(,"products":["42"])", "properties.products[0]", "must be an object"},
      {kOrder, R"("quantity":2)", R"("quantity":2.0)", "properties.products[0].quantity",
       "must be a whole number"},
      {kOrder, R"("quantity":2)", R"("quantity":"2")", "properties.products[0].quantity",
       "must be a whole number"},
      {kOrder, R"("id":"42",)", "", "properties.products[0].id", "is missing"},
      {kOrder, R"("/42")", R"("")", "properties.products[0].url", "is no URL"},
      {kOrder, R"("title":"Boots")", R"("meta":{})", "properties.products[0].meta", "unknown key"},
      // Events of a host's own, and identify records.
      {kCustom, R"("event":"wished",)", "", "event", "is missing"},
      {kCustom, R"("event")", R"("name":"wished","event")", "name", "unknown key"},
      {kCustom, R"("properties":{"a":[{"b":1.5}],"type":null},)", "", "properties", "is missing"},
      {kCustom, R"({"a":[{"b":1.5}],"type":null})", "[]", "properties", "must be an object"},
      {kCustom, R"("user_id":"alice",)", "", "user_id", "is missing"},
      {kCustom, R"(,"channel":{"app":{"name":"sdk"}})", "", "channel", "is missing"},
      {kIdentify, R"("user_id":"alice",)", "", "user_id", "is missing"},
      {kIdentify, R"("anonymous_id":"a-1",)", "", "anonymous_id", "is missing"},
      {kIdentify, R"("timezone":"UTC",)", "", "timezone", "is missing"},
      {kIdentify, R"(,"timestamp":NOW)", "", "timestamp", "is missing"},
      {kIdentify, "NOW", "true", "timestamp", "must be a whole number"},
      {kIdentify, R"("UTC")", R"("UTC","channel":{"app":{"name":"sdk"}})", "channel",
       "unknown key"},
      {kIdentify, R"("UTC")", R"("UTC","event":"identify")", "event", "unknown key"},
      // No JSON object at all.
      {kIdentify, kIdentify, "[]", "body", "must be an object"},
      {kIdentify, "NOW}", "NOW", "body", "line 1"},
      {kIdentify, "alice", "\xFF", "body", "line 1"}};
  start(kScenario);
  const std::string user = credential();
  std::vector<Request> requests;
  requests.reserve(cases.size());
  for (const Case& each : cases) {
    requests.push_back({.body = replaced(each.event, each.from, each.to), .user = user});
  }
  const auto answers = post(requests);
  ASSERT_EQ(answers.size(), cases.size());
  for (std::size_t i = 0; i < cases.size(); ++i) {
    const std::string expected = R"({"message":")" + cases[i].field + ": " + cases[i].reason;
    EXPECT_TRUE(answers[i].starts_with(expected)) << answers[i] << ", not " << expected;
    EXPECT_TRUE(answers[i].ends_with(" 422")) << answers[i];
  }
  EXPECT_EQ(sandbox_->events(), R"({"events":[]})");
  EXPECT_EQ(count(sandbox_->refusals(), R"("of":"events","status":422,"field":")"), cases.size());
}

TEST_F(BehaviorTest, AnEventWithANumberInPlaceOfATextIsRefusedNamingTheField) {
  const std::string category = "properties.categories[1].";
  const std::string line = "properties.products[0].";
  const std::vector<std::pair<std::string, std::map<std::string, std::string>>> events = {
      {kProduct,
       {{"product_viewed", "event"},
        {"alice", "user_id"},
        {"a-1", "anonymous_id"},
        {"Europe/Berlin", "timezone"},
        {"sdk", "channel.app.name"},
        {"42", "properties.id"},
        {"Boots", "properties.title"},
        {"3.50", "properties.price"},
        {"https://shop.example/42", "properties.url"},
        {"7", category + "id"},
        {"Shoes", category + "title"},
        {"/c/7", category + "url"}}},
      {kSearch, {{"boots", "properties.query"}, {"/s", "properties.url"}}},
      {kCategory,
       {{"7", "properties.id"}, {"Shoes", "properties.title"}, {"/c/7", "properties.url"}}},
      {kOrder,
       {{"beef", "context.campaign.rules_pic_key"},
        {"o-1", "properties.id"},
        {"7.00", "properties.revenue"},
        {"42", line + "id"},
        {"Boots", line + "title"},
        {"/42", line + "url"},
        {"3.50", line + "price"}}},
      {kCustom, {{"wished", "event"}, {"alice", "user_id"}}},
      {kIdentify, {{"alice", "user_id"}, {"a-1", "anonymous_id"}, {"UTC", "timezone"}}}};
  start(kScenario);
  const std::string user = credential();
  std::vector<Exchange> exchanges;
  for (const auto& [event, fields] : events) {
    for (const auto& [text, field] : fields) {
      exchanges.push_back({{.body = replaced(event, "\"" + text + "\"", "1"), .user = user},
                           R"({"message":")" + field + R"(: must be a text"} 422)"});
    }
  }
  expectAnswers(exchanges);
}

TEST_F(BehaviorTest, AnEventOtherThanAPostOfJSONWithAnIssuedCredentialIsRefused) {
  start(kScenario);
  const std::string user = credential();
  const std::string url = kEvents;
  const std::string unknown = R"({"error":"Authorization: is no credential in use"} 401)";
  const auto foreign = foreignCredential();
  const auto swapped = user.substr(user.find(':') + 1) + ":" + user.substr(0, user.find(':'));
  const std::vector<Exchange> cases = {
      {{.body = kIdentify}, unknown},
      {{.body = kIdentify, .user = "identifier:token"}, unknown},
      {{.body = kIdentify, .user = user + "0"}, unknown},
      {{.body = kIdentify, .user = swapped}, unknown},
      {{.body = "{}", .method = "GET"}, unknown},
      {{.url = url + "/", .body = kIdentify, .user = "identifier:token"}, unknown},
      {{.body = kIdentify, .user = foreign}, unknown},
      {{.body = kIdentify, .user = user, .method = "GET"},
       R"({"message":"method: must be POST"} 422)"},
      {{.body = kIdentify, .user = user, .method = "PUT"},
       R"({"message":"method: must be POST"} 422)"},
      {{.url = url + "/", .body = kIdentify, .user = user},
       R"({"message":"path: must be /v1/events"} 422)"},
      {{.url = "https://events.shop.example/", .body = kIdentify, .user = user},
       R"({"message":"path: must be /v1/events"} 422)"},
      {{.url = url + "?x", .body = kIdentify, .user = user},
       R"({"message":"query: must be empty"} 422)"},
      {{.body = kIdentify, .user = user, .type = ""},
       R"({"message":"Content-Type: must be application/json"} 422)"},
      {{.body = kIdentify, .user = user, .type = "text/json"},
       R"({"message":"Content-Type: must be application/json"} 422)"},
      {{.body = kIdentify, .user = user, .type = "application/json; charset=latin1"},
       R"({"message":"Content-Type: must be application/json"} 422)"},
      {{.body = kIdentify, .user = user, .type = "application/json; v=1"},
       R"({"message":"Content-Type: must be application/json"} 422)"}};
  expectAnswers(cases);
  EXPECT_EQ(count(sandbox_->refusals(), R"("of":"events")"), cases.size());
}

TEST_F(BehaviorTest, ACredentialHoldsAcrossStartsWhileItsKeyAndTheSecretAreKept) {
  start(kScenario);
  const std::string user = credential();
  const Request event{.body = kIdentify, .user = user};
  const fs::path secret = state_ / "secret";
  EXPECT_EQ(fs::status(secret).permissions(), fs::perms::owner_read | fs::perms::owner_write);

  start(kScenario);
  EXPECT_TRUE(post(event).ends_with(" 200"));
  EXPECT_EQ(credential(), user);

  start(R"({"behavior": {"keys": [{"key": "other-key"}]}})");
  EXPECT_TRUE(post(event).ends_with(" 401"));

  std::ofstream(secret) << "damaged";
  start(kScenario);
  EXPECT_TRUE(post(event).ends_with(" 401"));
  EXPECT_NE(credential(), user);
}

TEST_F(BehaviorTest, FaultsAreAnsweredOnceOnDemandAndOnlyToRightRequests) {
  struct Case {
    std::string fault, verification, event;
  };
  const std::string refused = R"({"error":"Refused on demand"} )";
  const std::string unprocessable = R"({"message":"Refused on demand"} 422)";
  const std::vector<Case> cases = {
      {R"("kind": "unauthorized")", refused + "401", refused + "401"},
      {R"("kind": "forbidden")", refused + "403", refused + "403"},
      {R"("kind": "unprocessable")", unprocessable, unprocessable},
      {R"("kind": "server-error")", "Failed on demand 500", "Failed on demand 500"},
      {R"("kind": "no-content")", " 204", " 204"},
      {R"("kind": "malformed")", R"({"data": {"message":  200)", R"({"data": {"message":  200)"},
      {R"("kind": "missing-fields")",
       R"({"data":{"behavioral_endpoint_url":"https://events.shop.example/v1/events"}} 200)",
       R"({"message":"accepted"} 200)"},
      {R"("kind": "wrong-types")", R"({"data":{"behavioral_endpoint_url":1,)",
       R"({"message":1,"request_id":["identifier"]} 200)"},
      {R"("kind": "server-error", "status": 503, "body": "later")", "later 503", "later 503"},
      {R"("status": 429, "json": {"a": 1})", R"({"a":1} 429)", R"({"a":1} 429)"},
      {R"("kind": "cut")", " 000", " 000"},
      {R"("kind": "cut-during")", R"({"data":)", R"({"message":)"}};
  start(kScenario);
  const Request verification{.url = kService, .body = kVerification};
  const Request event{.body = kIdentify, .user = credential()};
  const Request badEvent{.body = "{}", .user = event.user};
  const std::string faults = "https://events.shop.example/_sandbox/faults/";
  for (const auto& [fault, verified, acknowledged] : cases) {
    const std::string once = "{" + fault + R"(, "times": 1})";
    const auto set = post({{.url = faults + "verification", .body = once, .method = "PUT"},
                           {.url = faults + "events", .body = once, .method = "PUT"},
                           badEvent});
    EXPECT_EQ(set[0] + set[1], " 204 204");
    EXPECT_EQ(set[2], R"({"message":"type: is missing"} 422)");
    const auto answers = post({verification, event, verification, event});
    ASSERT_EQ(answers.size(), 4U);
    EXPECT_TRUE(answers[0].starts_with(verified)) << answers[0] << ", not " << verified;
    EXPECT_TRUE(answers[1].starts_with(acknowledged)) << answers[1] << ", not " << acknowledged;
    EXPECT_TRUE(answers[0] != answers[2] && answers[2].ends_with("}} 200")) << answers[2];
    EXPECT_TRUE(answers[1] != answers[3] && answers[3].ends_with("} 200")) << answers[3];
  }
  EXPECT_EQ(count(sandbox_->events(), "request_id"), cases.size());
  const std::string answered = "\"answered\":" + std::to_string(cases.size());
  EXPECT_EQ(count(curl("https://events.shop.example/_sandbox/faults").output, answered), 2U);

  post({.url = faults + "verification", .body = "\"bad-endpoint\"", .method = "PUT"});
  EXPECT_NE(post(verification).find(R"("behavioral_endpoint_url":"not a URL")"), std::string::npos);
}

TEST_F(BehaviorTest, FaultsComeFromTheScenarioInTurnAndLastUntilTakenBack) {
  start(R"({"behavior": {"keys": [{"key": "demo-key"}], "faults": {"events": [
    {"kind": "server-error", "times": 2}, {"delay": 1, "times": 1}, "forbidden"]}}})");
  const Request event{.body = kIdentify, .user = credential()};
  const auto answers = post({event, event, event, event, event});
  ASSERT_EQ(answers.size(), 5U);
  const std::vector<const char*> statuses = {"500", "500", "200", "403", "403"};
  for (std::size_t i = 0; i < statuses.size(); ++i) EXPECT_TRUE(answers[i].ends_with(statuses[i]));

  const std::string faults = "https://events.shop.example/_sandbox/faults/events";
  EXPECT_EQ(curl("https://events.shop.example/_sandbox/faults").output,
            R"({"verification":{"answered":0,"waiting":[]},)"
            R"("events":{"answered":5,"waiting":[{"kind":"forbidden"}]}})");
  EXPECT_EQ(post({.url = faults, .body = R"([{"kind":"cut"},{"kind":"cute"}])", .method = "PUT"}),
            R"({"message":"[1].kind: is no kind of fault"} 422)");
  EXPECT_TRUE(post(event).ends_with("403"));
  EXPECT_EQ(curl("-X DELETE -w '%{http_code}' " + faults).output, "204");
  EXPECT_TRUE(post(event).ends_with("200"));

  sandbox_->setFaults(BehaviorPart::events, R"({"kind": "slow", "delay": 600000})");
  const auto late = curl("-m 0.2 -u " + event.user + " --json '" +
                         replaced(kIdentify, "NOW", secondsFromNow(0)) + "' " + kEvents);
  EXPECT_EQ(late.exitCode, 28);
  EXPECT_EQ(count(sandbox_->events(), "request_id"), 3U);
}

TEST_F(BehaviorTest, TenThousandEventsAreTakenAndListedInSeconds) {
  start(kScenario);
  const std::string user = credential();
  const auto begun = std::chrono::steady_clock::now();
  const auto sent =
      curl("-o /dev/null -u " + user + " --json '" + replaced(kProduct, "NOW", secondsFromNow(0)) +
           "' '" + kEvents + "#[1-10000]'");
  const std::string events = curl("https://events.shop.example/_sandbox/events").output;
  EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(60));
  EXPECT_EQ(sent.exitCode, 0) << sent.output;
  EXPECT_EQ(count(events, R"("request_id":)"), 10'000U);
  EXPECT_EQ(sandbox_->refusals(), R"({"refusals":[]})");
}

TEST_F(BehaviorTest, BadTermsOfBehaviourAreRefusedNamingThePlace) {
  std::vector<std::pair<std::string, std::string>> cases = {
      {R"("keyz": [])", "behavior.keyz: unknown key"},
      {R"("service": "https://a.example")", "behavior.keys: is missing"},
      {R"("keys": [{"key": ""}])", "behavior.keys[0].key: must not be empty"},
      {R"("keys": [{"key": "a"}, {"key": "a"}])", "behavior.keys[1].key: is there already"},
      {R"("keys": [], "service": "a.example")", "behavior.service: must be"},
      {R"("keys": [], "endpoint": "https://a.example/?b")", "behavior.endpoint: must be"},
      {R"("keys": [], "endpoint": "https://shop.example/x")", "behavior: another answer stands at"},
      {R"("keys": [], "timestampTolerance": "1h")", "behavior.timestampTolerance: must be a whole"},
      {R"("keys": [], "faults": {"event": []})", "behavior.faults.event: unknown key"},
      {R"("keys": [], "faults": {"events": ["bad-endpoint"]})",
       "behavior.faults.events[0].kind: is no kind"},
      {R"("keys": [], "faults": {"events": {"kind": "cut", "times": 0}})",
       "behavior.faults.events.times: must be"}};
  for (auto& [terms, message] : cases) {
    terms = R"({"answers": [{"at": "https://shop.example/x"}], "behavior": {)" + terms + "}}";
  }
  expectRefused(cases);
}

TEST_F(BehaviorTest, TermsSayWhereAndHowFarFromNow) {
  start(R"({"behavior": {"keys": [{"key": "demo-key"}], "service": "https://own.example/api/",
    "endpoint": "https://own.example", "timestampTolerance": 1000000000000}})");
  const std::string answer =
      post({.url = "https://own.example/api/behavioral_verification", .body = kVerification});
  EXPECT_EQ(valueOf(answer, "behavioral_endpoint_url"), "https://own.example");
  const std::string user = valueOf(answer, "behavioral_endpoint_api_token_identifier") + ":" +
                           valueOf(answer, "behavioral_endpoint_api_token");
  EXPECT_TRUE(post({.url = "https://own.example",
                    .body = replaced(kIdentify, "NOW", "1700000000000"),
                    .user = user})
                  .ends_with(" 200"));
}

}  // namespace
}  // namespace quenwick::sandbox
