#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "tests/sandbox/SandboxFixture.h"

namespace quenwick::sandbox {

inline const std::string kService = "https://api.shop.example/behavioral_verification";
inline const std::string kEvents = "https://events.shop.example/v1/events";
inline const std::string kScenario = R"({"behavior": {"keys": [
  {"key": "demo-key"}, {"key": "shop-key", "bundleIdentifiers": ["com.example.shop"]}]}})";

inline const std::string kVerification =
    R"({"bundle_identifier":"com.example.any","api_key":"demo-key"})";

/// What events of a type have in common; NOW stands for the time.
inline const std::string kCommon =
    R"("user_id":"alice","anonymous_id":"a-1","timezone":"Europe/Berlin","timestamp":NOW,)"
    R"("channel":{"app":{"name":"sdk"}}})";
inline const std::string kProduct =
    R"({"type":"track","event":"product_viewed","properties":{"id":"42","title":"Boots",)"
    R"("price":"3.50","url":"https://shop.example/42","categories":[{"id":"1"},{"id":"7",)"
    R"("title":"Shoes","url":"/c/7"}],"meta":{"sizes":[44,null,18446744073709551615]}},)" +
    kCommon;
inline const std::string kSearch =
    R"({"type":"track","event":"product_searched","properties":{"query":"boots","url":"/s"},)" +
    kCommon;
inline const std::string kCategory =
    R"({"type":"track","event":"category_viewed","properties":{"id":"7","title":"Shoes",)"
    R"("url":"/c/7"},)" +
    kCommon;
inline const std::string kOrder =
    R"({"type":"track","event":"order_completed","context":{"campaign":{"rules_pic_key":"beef"}},)"
    R"("properties":{"id":"o-1","revenue":"7.00","products":[{"id":"42","title":"Boots",)"
    R"("url":"/42","price":"3.50","quantity":2}]},)" +
    kCommon;
inline const std::string kCustom =
    R"({"type":"custom","event":"wished","properties":{"a":[{"b":1.5}],"type":null},)" + kCommon;
inline const std::string kIdentify =
    R"({"type":"identify","user_id":"alice","anonymous_id":"a-1","timezone":"UTC","timestamp":NOW})";

inline std::string replaced(std::string text, const std::string& from, const std::string& to) {
  const auto at = text.find(from);
  EXPECT_NE(at, std::string::npos) << from << " in " << text;
  return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

inline std::string secondsFromNow(long long offset) {
  using namespace std::chrono;
  const auto now = system_clock::now().time_since_epoch();
  return std::to_string(duration_cast<seconds>(now).count() + offset) + "000";
}

inline std::string dated(const std::string& event) {
  return replaced(event, "NOW", secondsFromNow(0));
}

/// The text that stands under a key of a JSON object.
inline std::string valueOf(const std::string& json, const std::string& key) {
  const std::string prefix = "\"" + key + "\":\"";
  const auto at = json.find(prefix);
  if (at == std::string::npos) return "none";
  return json.substr(at + prefix.size(), json.find('"', at + prefix.size()) - at - prefix.size());
}

/// What the handshake's answer gives to send events with, as "identifier:token".
inline std::string credentialIn(const std::string& answer) {
  return valueOf(answer, "behavioral_endpoint_api_token_identifier") + ":" +
         valueOf(answer, "behavioral_endpoint_api_token");
}

/// A request that curl sends.
struct Sending {
  std::string url = kEvents;
  std::string body = {};
  std::string user = {};
  std::string type = "application/json";
  std::string method = "POST";
};

/// A sandbox that does handshakes and takes events.
class BehaviorFixture : public SandboxFixture {
 protected:
  /// Makes the request; the answer is "body status".
  std::string post(const Sending& request) const {
    const bool isDated = request.body.find("NOW") != std::string::npos;
    std::vector<std::string> words = curlWords();
    words.insert(words.end(), {"--silent", "--request", request.method, "--write-out",
                               " %{http_code}", "--header", "Content-Type:" + request.type,
                               "--data-binary", isDated ? dated(request.body) : request.body});
    if (!request.user.empty()) words.insert(words.end(), {"--user", request.user});
    words.push_back(request.url);
    return tests::runProgram(words).output;
  }

  /// The credential that the handshake issues for the demo key.
  std::string credential() const {
    return credentialIn(post({.url = kService, .body = kVerification}));
  }
};

}  // namespace quenwick::sandbox
