#include "sandbox/Fault.h"

#include <boost/json.hpp>

#include "sandbox/AnswerReader.h"
#include "sandbox/JSONNode.h"

namespace json = boost::json;

namespace quenwick::sandbox {
namespace {

constexpr std::uint64_t kMostTimes = 1'000'000'000;

constexpr std::string_view kKinds = R"({
  "unauthorized": {"status": 401, "json": {"error": "Refused on demand"}},
  "forbidden": {"status": 403, "json": {"error": "Refused on demand"}},
  "unprocessable": {"status": 422, "json": {"message": "Refused on demand"}},
  "server-error": {"status": 500, "type": "text/plain", "body": "Failed on demand"},
  "no-content": {"status": 204},
  "malformed": {"type": "application/json", "body": "{\"data\": {\"message\": "},
  "slow": {"delay": 5000},
  "cut": {"cut": "before"},
  "cut-during": {"cut": "during"}
})";

constexpr std::string_view kVerificationKinds = R"({
  "missing-fields": {"json": {"data":
    {"behavioral_endpoint_url": "https://events.shop.example/v1/events"}}},
  "wrong-types": {"json": {"data":
    {"behavioral_endpoint_url": 1, "behavioral_endpoint_api_token": true,
     "behavioral_endpoint_api_token_identifier": ["identifier"]}}},
  "bad-endpoint": {"json": {"data":
    {"behavioral_endpoint_url": "not a URL", "behavioral_endpoint_api_token": "token",
     "behavioral_endpoint_api_token_identifier": "identifier"}}}
})";

constexpr std::string_view kEventKinds = R"({
  "missing-fields": {"json": {"message": "accepted"}},
  "wrong-types": {"json": {"message": 1, "request_id": ["identifier"]}}
})";

/// The answer of a kind, as a scenario would spell it; null if there is no such kind.
json::value answerOfKind(std::string_view kind, BehaviorPart part) {
  const bool isEvent = part == BehaviorPart::events;
  for (const auto kinds : {kKinds, isEvent ? kEventKinds : kVerificationKinds}) {
    const json::value all = parseJSON(kinds);
    if (const auto* answer = all.get_object().if_contains(kind)) return *answer;
  }
  return {};
}

/// What the fault's kind stands for, under what else it says.
json::object spelledOut(const JSONNode& node, BehaviorPart part) {
  json::object result;
  if (const auto kind = node.member("kind")) {
    const json::value answer = answerOfKind(kind->text(), part);
    if (answer.is_null()) kind->refuse("is no kind of fault");
    result = answer.get_object();
  }
  for (const auto& [key, value] : node.value().get_object()) {
    if (key != "kind" && key != "times") result.insert_or_assign(key, value);
  }
  return result;
}

Fault readFault(const JSONNode& node, BehaviorPart part) {
  if (!node.isObject()) {
    const json::value kind{{"kind", node.text()}};
    return readFault(node.withValue(kind), part);
  }
  Fault fault{.text = node.value().get_object()};
  if (const auto times = node.member("times")) fault.times = times->number(1, kMostTimes);
  const json::value spelled = spelledOut(node, part);
  fault.answer = readAnswer(node.withValue(spelled), {});
  fault.isRightAnswer = true;
  for (const auto& [key, value] : spelled.get_object()) {
    fault.isRightAnswer = fault.isRightAnswer && (key == "delay" || key == "cut");
  }
  return fault;
}

}  // namespace

Answer Fault::over(Answer right) const {
  if (!isRightAnswer) return answer;
  right.delay = answer.delay;
  right.cut = answer.cut;
  return right;
}

std::vector<Fault> readFaults(const JSONNode& node, BehaviorPart part) {
  if (!node.value().is_array()) return {readFault(node, part)};
  std::vector<Fault> faults;
  for (const JSONNode& each : node.elements()) faults.push_back(readFault(each, part));
  return faults;
}

}  // namespace quenwick::sandbox
