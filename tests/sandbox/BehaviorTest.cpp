#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <future>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/sandbox/BehaviorFixture.h"

namespace quenwick::sandbox {
namespace {

namespace fs = std::filesystem;

/// How the sandbox answers what it refuses.
std::string unprocessable(const std::string& reason) {
  return R"({"message":")" + reason + R"("} 422)";
}
std::string refused(const std::string& reason, const std::string& status) {
  return R"({"error":")" + reason + R"("} )" + status;
}

struct Exchange {
  Sending request;
  std::string answer;
};

class BehaviorTest : public BehaviorFixture {
 protected:
  void expectAnswers(const std::vector<Exchange>& exchanges) {
    for (const auto& [request, answer] : exchanges) EXPECT_EQ(post(request), answer);
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
};

TEST_F(BehaviorTest, TheHandshakeRefusesAllButAPostOfTwoKnownTexts) {
  const auto body = [](const std::string& from, const std::string& to) {
    return Sending{.url = kService, .body = replaced(kVerification, from, to)};
  };
  const std::vector<Exchange> cases = {
      {body("demo-key\"", "demo-key\",\"x\":1"), unprocessable("x: unknown key")},
      {body(R"(,"api_key":"demo-key")", ""), unprocessable("api_key: is missing")},
      {body(R"("bundle_identifier":"com.example.any",)", ""),
       unprocessable("bundle_identifier: is missing")},
      {body("\"demo-key\"", "7"), unprocessable("api_key: must be a text")},
      {body("\"com.example.any\"", "null"), unprocessable("bundle_identifier: must be a text")},
      {body("com.example.any", ""), unprocessable("bundle_identifier: must not be empty")},
      {body("demo-key", "demo-kez"), refused("api_key: is not known", "403")},
      {body("demo-key", "shop-key"), refused("bundle_identifier: has another API key", "403")},
      {{.url = kService, .body = "[]"}, unprocessable("body: must be an object")},
      {{.url = kService, .body = "{\"api_key\":"},
       unprocessable("body: line 1, column 12: incomplete JSON")},
      {{.url = kService, .body = kVerification, .method = "GET"},
       unprocessable("method: must be POST")},
      {{.url = kService, .body = kVerification, .type = "application/x-www-form-urlencoded"},
       unprocessable("Content-Type: must be application/json")},
      {{.url = kService + "?a=b", .body = kVerification}, unprocessable("query: must be empty")},
      {{.url = kService + "/", .body = kVerification},
       "Nothing is served at api.shop.example/behavioral_verification/\n 404"}};
  start(kScenario);
  expectAnswers(cases);
  EXPECT_EQ(count(sandbox_->refusals(), R"("of":"verification")"), std::ssize(cases) - 1);
}

TEST_F(BehaviorTest, TheHandshakeAnswersTheEndpointAndACredentialForEachKey) {
  start(kScenario);
  const std::string answers[] = {
      post({.url = kService, .body = kVerification, .type = "Application/JSON; charset=\"UTF-8\""}),
      post({.url = kService,
            .body = R"({"api_key":"shop-key","bundle_identifier":"com.example.shop"})"})};
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
  std::vector<std::string> bodies = {kProduct, kSearch, kCategory, kOrder, kCustom, kIdentify};
  for (const char* event : {"product_added", "product_removed"}) {
    bodies.push_back(replaced(kProduct, "product_viewed", event));
  }
  bodies.push_back(replaced(kCustom, "\"alice\"", "\"\""));
  bodies.push_back(replaced(kCustom, "Europe/Berlin", "Etc/GMT+5"));
  start(kScenario);
  const std::string user = credential();
  std::set<std::string> identifiers;
  std::size_t at = 0;
  for (const std::string& event : bodies) {
    const std::string body = dated(event);
    const auto answer =
        post({.body = body, .user = user, .type = "application/json;charset=utf-8"});
    EXPECT_TRUE(answer.ends_with("\"} 200")) << answer << " to " << body;
    const auto identifier = valueOf(answer, "request_id");
    identifiers.insert(identifier);
    const std::string events = sandbox_->events();
    at = events.find("{\"request_id\":\"" + identifier, at);
    ASSERT_NE(at, std::string::npos) << answer;
    at = events.find("\"body\":" + body + "}", at);
    ASSERT_NE(at, std::string::npos) << body;
  }
  EXPECT_EQ(identifiers.size(), bodies.size());
  EXPECT_EQ(curl("https://events.shop.example/_sandbox/events").output, sandbox_->events());
  EXPECT_EQ(sandbox_->refusals(), R"({"refusals":[]})");

  EXPECT_EQ(curl("-X DELETE -w '%{http_code}' https://events.shop.example/_sandbox/events").output,
            "204");
  EXPECT_EQ(sandbox_->events(), R"({"events":[]})");
}

TEST_F(BehaviorTest, AnEventOtherThanAPostOfJSONWithAnIssuedCredentialIsRefused) {
  start(kScenario);
  const std::string user = credential();
  const std::string unknown = refused("Authorization: is no credential in use", "401");
  const std::string wrongType = unprocessable("Content-Type: must be application/json");
  const auto foreign = foreignCredential();
  const auto swapped = user.substr(user.find(':') + 1) + ":" + user.substr(0, user.find(':'));
  const std::vector<Exchange> cases = {
      {{.body = kIdentify}, unknown},
      {{.body = kIdentify, .user = "identifier:token"}, unknown},
      {{.body = kIdentify, .user = user + "0"}, unknown},
      {{.body = kIdentify, .user = swapped}, unknown},
      {{.body = "{}", .method = "GET"}, unknown},
      {{.url = kEvents + "/", .body = kIdentify, .user = "identifier:token"}, unknown},
      {{.body = kIdentify, .user = foreign}, unknown},
      {{.body = kIdentify, .user = user, .method = "GET"}, unprocessable("method: must be POST")},
      {{.url = kEvents + "/", .body = kIdentify, .user = user},
       unprocessable("path: must be /v1/events")},
      {{.url = kEvents + "?x", .body = kIdentify, .user = user},
       unprocessable("query: must be empty")},
      {{.body = kIdentify, .user = user, .type = ""}, wrongType},
      {{.body = kIdentify, .user = user, .type = "text/json"}, wrongType},
      {{.body = kIdentify, .user = user, .type = "application/json; charset=latin1"}, wrongType}};
  expectAnswers(cases);
  EXPECT_EQ(count(sandbox_->refusals(), R"("of":"events")"), std::ssize(cases));
}

TEST_F(BehaviorTest, ACredentialHoldsAcrossStartsWhileItsKeyAndTheSecretAreKept) {
  start(kScenario);
  const std::string user = credential();
  const Sending event{.body = kIdentify, .user = user};
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
  const std::string demanded = "Refused on demand";
  const std::string halved = R"({"data": {"message":  200)";
  const std::vector<Case> cases = {
      {R"("kind": "unauthorized")", refused(demanded, "401"), refused(demanded, "401")},
      {R"("kind": "forbidden")", refused(demanded, "403"), refused(demanded, "403")},
      {R"("kind": "unprocessable")", unprocessable(demanded), unprocessable(demanded)},
      {R"("kind": "server-error")", "Failed on demand 500", "Failed on demand 500"},
      {R"("kind": "no-content")", " 204", " 204"},
      {R"("kind": "malformed")", halved, halved},
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
  const Sending verification{.url = kService, .body = kVerification};
  const Sending event{.body = kIdentify, .user = credential()};
  const Sending badEvent{.body = "{}", .user = event.user};
  const std::string faults = "https://events.shop.example/_sandbox/faults/";
  for (const auto& [fault, verified, acknowledged] : cases) {
    const std::string once = "{" + fault + R"(, "times": 1})";
    for (const char* part : {"verification", "events"}) {
      EXPECT_EQ(post({.url = faults + part, .body = once, .method = "PUT"}), " 204");
    }
    EXPECT_EQ(post(badEvent), unprocessable("type: is missing"));
    for (const auto& [request, faulty] :
         {Exchange{verification, verified}, {event, acknowledged}}) {
      const auto first = post(request);
      const auto second = post(request);
      EXPECT_TRUE(first.starts_with(faulty)) << first << ", not " << faulty;
      EXPECT_TRUE(first != second && second.ends_with("} 200")) << second;
    }
  }
  EXPECT_EQ(count(sandbox_->events(), "request_id"), std::ssize(cases));
  const std::string answered = "\"answered\":" + std::to_string(cases.size());
  EXPECT_EQ(count(curl("https://events.shop.example/_sandbox/faults").output, answered), 2);

  post({.url = faults + "verification", .body = "\"bad-endpoint\"", .method = "PUT"});
  EXPECT_NE(post(verification).find(R"("behavioral_endpoint_url":"not a URL")"), std::string::npos);
}

TEST_F(BehaviorTest, FaultsComeFromTheScenarioInTurnAndLastUntilTakenBack) {
  start(R"({"behavior": {"keys": [{"key": "demo-key"}], "faults": {"events": [
    {"kind": "server-error", "times": 2}, {"delay": 1, "times": 1}, "forbidden"]}}})");
  const Sending event{.body = kIdentify, .user = credential()};
  for (const char* status : {"500", "500", "200", "403", "403"}) {
    EXPECT_TRUE(post(event).ends_with(status)) << status;
  }

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
  auto late =
      std::async(std::launch::async, run,
                 curlCommand("-u " + event.user + " --json '" + dated(kIdentify) + "' " + kEvents));
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (count(sandbox_->events(), "request_id") < 3) {
    ASSERT_LT(std::chrono::steady_clock::now(), deadline);
  }
  EXPECT_EQ(late.wait_for(std::chrono::seconds(0)), std::future_status::timeout);
  sandbox_.reset();
  EXPECT_NE(late.get().exitCode, 0);
}

TEST_F(BehaviorTest, TenThousandEventsAreTakenAndListedInSeconds) {
  start(kScenario);
  const std::string user = credential();
  const auto begun = std::chrono::steady_clock::now();
  const auto sent = curl("-o /dev/null -u " + user + " --json '" + dated(kProduct) + "' '" +
                         kEvents + "#[1-10000]'");
  const std::string events = curl("https://events.shop.example/_sandbox/events").output;
  EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(60));
  EXPECT_EQ(sent.exitCode, 0) << sent.output;
  EXPECT_EQ(count(events, R"("request_id":)"), 10'000);
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
  EXPECT_TRUE(post({.url = "https://own.example",
                    .body = replaced(kIdentify, "NOW", "1700000000000"),
                    .user = credentialIn(answer)})
                  .ends_with(" 200"));
}

}  // namespace
}  // namespace quenwick::sandbox
